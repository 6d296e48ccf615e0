// SPDX-License-Identifier: MIT
// The command line of zov-apply.
#pragma once

#include "common/connection.h"
#include "common/selection.h"
#include "course/driver.h"

struct ApplySettings : Endpoint, Selection, CourseSettings {
    std::vector<const char *> sets; // PATH=VALUE
    bool allow_removal = false;
    const char *save = nullptr; // null: a file of its own name
    bool no_save = false;
    const char *undo = nullptr; // what an earlier run has saved
};

// clang-format off
inline constexpr Option<ApplySettings> APPLY_OPTIONS[] = {
    SELECTION_OPTIONS,
    {{.name = "set", .argument = "PATH=VALUE", .help = "lay this setting over the files; PATH=@FILE reads it",
      .repeatable = true, .expected = "PATH=VALUE or PATH=@FILE"},
     [](const char *text, ApplySettings &to) {
         to.sets.push_back(text);
         return strchr(text, '=') != nullptr;
     }},
    {{.name = "allow-removal", .argument = nullptr, .help = "remove WLANs and rules that a device's own file lacks"},
     [](const char *, ApplySettings &to) { return take_flag(to.allow_removal); }},
    {{.name = "undo", .argument = "FILE", .help = "send back what an earlier run has saved there",
      .expected = "a file name"},
     [](const char *text, ApplySettings &to) { return take_name(text, to.undo); }},
    {{.name = "save", .argument = "FILE", .help = "save there what will be changed, for --undo",
      .expected = "a file name"},
     [](const char *text, ApplySettings &to) { return take_name(text, to.save); }},
    {{.name = "no-save", .argument = nullptr, .help = "save nothing"},
     [](const char *, ApplySettings &to) { return take_flag(to.no_save); }},
    COURSE_OPTIONS("1,10,25%"),
    ENDPOINT_OPTIONS,
};
// clang-format on

inline constexpr ProgramInfo APPLY_PROGRAM = {
    "zov-apply", "[FILE|DIRECTORY]...",
    "Makes devices have what configuration files say: compares them with what the controller has\n"
    "stored, shows the differences, asks, saves what will be changed, sends it in batches and\n"
    "proves it. A file named by an address is that device's own, others are for all chosen "
    "ones.\n"};
