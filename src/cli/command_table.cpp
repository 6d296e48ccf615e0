// SPDX-License-Identifier: MIT
#include "cli/command_table.h"

#include "util/output.h"

#include <cstring>

// Each row stands at the end of its command's file.
#define COMMAND_ROWS(ROW)                                                                          \
    ROW(AC)                                                                                        \
    ROW(WTPS)                                                                                      \
    ROW(CFG)                                                                                       \
    ROW(UPG)                                                                                       \
    ROW(RST)                                                                                       \
    ROW(MEM)                                                                                       \
    ROW(INITFW)                                                                                    \
    ROW(WTPFLAG)                                                                                   \
    ROW(SCAN)                                                                                      \
    ROW(BGSCAN)                                                                                    \
    ROW(AUTOCH)                                                                                    \
    ROW(AUTOTP)                                                                                    \
    ROW(KICK)                                                                                      \
    ROW(ONLINE)                                                                                    \
    ROW(EXIT)                                                                                      \
    ROW(KILL)                                                                                      \
    ROW(DBG)                                                                                       \
    ROW(NODC)                                                                                      \
    ROW(CAC)                                                                                       \
    ROW(SH)                                                                                        \
    ROW(FWLIST)

#define ROW(name) extern const CommandSpec name##_ROW;
COMMAND_ROWS(ROW)
#undef ROW

const CommandSpec *const COMMANDS[] = {
#define ROW(name) &name##_ROW,
    COMMAND_ROWS(ROW)
#undef ROW
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
