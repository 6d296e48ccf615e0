// SPDX-License-Identifier: MIT
// What a command is: one row, at the end of the command's own file.
#pragma once

#include "options/options.h"
#include "proto/session.h"

// Runs the command on the admitted session. Returns the process's exit status: 0, or 1 with every
// message printed.
using CommandHandler = int (*)(AcSession &session, const OptArgList &opts);

// An option that a command accepts, and the values that it can have where they are few, parted by
// blanks.
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
