// SPDX-License-Identifier: MIT
// All commands, in the order of the usage text.
#pragma once

#include "options/command.h"

extern const CommandSpec *const COMMANDS[]; // ended by null

// The row of a command word; null when there is no such command.
const CommandSpec *find_command(const char *name);

// Prints the usage text on standard output. `program` is the program's name as invoked.
void print_usage(const char *program);
