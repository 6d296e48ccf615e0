// SPDX-License-Identifier: MIT
// The command line of zov-check.
#pragma once

#include "common/command_line.h"
#include "common/connection.h"

// The controller's address is accepted, so that all companion tools can be given the same options,
// and not used.
struct CheckSettings : Endpoint {
    const char *type = nullptr; // null: what each file says
    bool items = false, strict = false;
    const char *format = nullptr;
};

inline constexpr const char *TYPES = "0 1", *CHECK_FORMATS = "text json";

inline constexpr Option<CheckSettings> CHECK_OPTIONS[] = {
    {{"type", "TYPE", "what the files are for, 0: access points, 1: switches", TYPES},
     [](const char *text, CheckSettings &to) { return take_word(text, TYPES, to.type); }},
    {{"strict", nullptr, "take warnings as errors"},
     [](const char *, CheckSettings &to) { return take_flag(to.strict); }},
    {{.name = "format",
      .argument = "FORMAT",
      .help = "how to print what is wrong",
      .values = CHECK_FORMATS,
      .initial = "text"},
     [](const char *text, CheckSettings &to) { return take_word(text, CHECK_FORMATS, to.format); }},
    {{"items", nullptr, "print what would be sent of each good file: id, index, path, value"},
     [](const char *, CheckSettings &to) { return take_flag(to.items); }},
    ENDPOINT_OPTIONS,
};

inline constexpr ProgramInfo CHECK_PROGRAM = {
    "zov-check",
    "FILE...",
    "Checks configuration files offline, as zov cfg would, and reports every error with its\n"
    "line, including misspelt keys. The FILE - is standard input.\n",
};
