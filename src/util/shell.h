// SPDX-License-Identifier: MIT
// Commands of the host's shell.
#pragma once

// Runs the command behind what standard output was given before, and returns its wait status as
// system(3) does. Works also when the parent has left SIGCHLD ignored, which would keep the status
// from being collected.
int run_shell(const char *command);

// The same for a command that has to succeed: 0; or 1, with the message printed.
int execute(const char *command);

// Reports a command that failed with a wait status. Returns 1.
int report_execute_failed(const char *command, int wait_status);
