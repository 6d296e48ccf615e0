// SPDX-License-Identifier: MIT
#include "cli/command_table.h"

#include "util/output.h"

#include <cstring>

const CommandSpec *const COMMANDS[] = {
#define ADDRESS(name) &name##_COMMAND,
    ALL_COMMANDS(ADDRESS)
#undef ADDRESS
        nullptr,
};

const CommandSpec *find_command(const char *name)
{
    const CommandSpec *const *command = COMMANDS;
    while (*command != nullptr && strcmp((*command)->name, name) != 0)
        command++;
    return *command;
}

static void print_line(const char *before, const char *text, const char *after)
{
    standard_output.put(before);
    standard_output.put(text);
    standard_output.put(after);
}

void print_usage(const char *program)
{
    print_line("usage: ", program, " COMMAND [ARGS]\n\nAvailable COMMAND type:\n");
    for (const CommandSpec *const *command = COMMANDS; *command != nullptr; command++) {
        print_line("", (*command)->name, "\t");
        print_line("", (*command)->description, "\n");
        for (const char *const *line = (*command)->help; *line != nullptr; line++)
            print_line("\t", *line, "\n");
    }
}
