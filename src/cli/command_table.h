// SPDX-License-Identifier: MIT
// The commands: one row each, in the order of the usage text.
#pragma once

#include "cli/options.h"
#include "proto/session.h"

// Runs one command on the admitted session. Returns the process's exit status: 0, or 1 with every
// message printed.
using CommandHandler = int (*)(AcSession &session, const OptArgList &opts);

struct CommandSpec {
    CommandHandler handler;
    const char *name;
    const char *description;
    const char *const *help; // lines of the usage text, ended by null
};

// The row of a command word; null when there is no such command.
const CommandSpec *find_command(const char *name);

// Prints the usage text on standard output. `program` is the program's name as invoked.
void print_usage(const char *program);
