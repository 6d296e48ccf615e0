// SPDX-License-Identifier: MIT
// The command line of zov-rollout.
#pragma once

#include "common/connection.h"
#include "common/selection.h"
#include "course/driver.h"

struct RolloutSettings : Endpoint, Selection, CourseSettings {
    const char *to = nullptr; // the version that all are to have; null: the newest
    bool allow_older = false;
    uint32_t period = 0, type = 0;
};

// clang-format off
inline constexpr Option<RolloutSettings> ROLLOUT_OPTIONS[] = {
    SELECTION_OPTIONS,
    COURSE_OPTIONS("10"),
    {{.name = "to", .argument = "VERSION", .help = "the version that all devices are to have",
      .expected = "a version"},
     [](const char *text, RolloutSettings &to) { return take_name(text, to.to); }},
    {{.name = "allow-older", .argument = nullptr, .help = "do not stop when an older version is announced"},
     [](const char *, RolloutSettings &to) { return take_flag(to.allow_older); }},
    {{.name = "period", .argument = "SEC", .help = "how long a device may be offline, for the controller",
      .expected = "whole seconds", .initial = "0"},
     [](const char *text, RolloutSettings &to) {
         return take_number<uint32_t>(text, 0, INT32_MAX, to.period);
     }},
    {{.name = "type", .argument = "N", .help = "the controller's type of upgrade",
      .values = "0 1 2", .initial = "0"},
     [](const char *text, RolloutSettings &to) {
         return take_number<uint32_t>(text, 0, 2, to.type);
     }},
    ENDPOINT_OPTIONS,
};
// clang-format on

inline constexpr ProgramInfo ROLLOUT_PROGRAM = {
    "zov-rollout", "",
    "Upgrades the firmware of devices in batches, tracks each until it is back online with its\n"
    "new version, and stops when too many fail. --mac, --name and --all-managed say which\n"
    "devices; at least one of them is needed.\n"};
