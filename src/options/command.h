// SPDX-License-Identifier: MIT
// What a command is: one row, at the end of the command's own file.
#pragma once

#include "options/options.h"
#include "proto/session.h"

// Runs the command on the admitted session. Returns the process's exit status: 0, or 1 with every
// message printed.
using CommandHandler = int (*)(AcSession &session, const OptArgList &opts);

// An option that a command accepts, and the values that it can have where they are few, separated
// by spaces.
struct CommandOption {
    OptionCode code = OPT_NONE;
    const char *values = nullptr;
};

struct CommandSpec {
    CommandHandler handler;
    const char *name;
    const char *description;
    const char *help[12];      // lines of the usage text, ended by null
    CommandOption options[12]; // what the handler's check_options() accepts, ended by OPT_NONE
};

// Every command, in the order of the usage text. The row is NAME_COMMAND, at the end of the
// command's own file.
// clang-format off
#define ALL_COMMANDS(COMMAND)                                                                      \
    COMMAND(AC) COMMAND(WTPS) COMMAND(CFG) COMMAND(UPG) COMMAND(RST) COMMAND(MEM)                  \
    COMMAND(INITFW) COMMAND(WTPFLAG) COMMAND(SCAN) COMMAND(BGSCAN) COMMAND(AUTOCH) COMMAND(AUTOTP) \
    COMMAND(KICK) COMMAND(ONLINE) COMMAND(EXIT) COMMAND(KILL) COMMAND(DBG) COMMAND(NODC)           \
    COMMAND(CAC) COMMAND(SH) COMMAND(FWLIST)
// clang-format on

#define DECLARE(name) extern const CommandSpec name##_COMMAND;
ALL_COMMANDS(DECLARE)
#undef DECLARE
