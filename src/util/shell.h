// SPDX-License-Identifier: MIT
// Commands of the host's shell.
#pragma once

#include "util/messages.h"

// Runs the command behind what standard output was given before, and returns its wait status as
// system(3) does. Works also when the parent has left SIGCHLD ignored, which would keep the status
// from being collected.
int run_shell(const char *command);

// The same for a command that has to succeed: 0; or 1, with the message reported.
int execute(const char *command, const Messages &messages);

// Reports a command that failed with a wait status. Returns 1.
int report_execute_failed(const char *command, int wait_status, const Messages &messages);
