// SPDX-License-Identifier: MIT
// The command line of zov-check.
#pragma once

#include "common/command_line.h"
#include "common/connection.h"

// The controller's address is accepted, so that all companion tools can be given the same options,
// and not used.
struct CheckSettings : Endpoint {
    uint8_t type = 0;
    bool items = false;

    [[nodiscard]] DeviceKind kind() const { return kind_of_type(type); }
};

inline constexpr Option<CheckSettings> CHECK_OPTIONS[] = {
    {{"type", "TYPE", "what the files are for, 0: access points (default), 1: switches", "0 1"},
     [](const char *text, CheckSettings &to) { return take_number<uint8_t>(text, 0, 1, to.type); }},
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
