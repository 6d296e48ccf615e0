// SPDX-License-Identifier: MIT
// The command line of zov-rollout.
#pragma once

#include "common/connection.h"

struct RolloutSettings : Endpoint {
    // Which devices: exactly one of the three.
    const char *mac = nullptr; // the text of `macs`
    MacList macs;
    const char *name = nullptr;
    bool all_managed = false;

    uint32_t batch = 10;
    uint32_t max_failures = 0;
    uint32_t period = 0;
    uint32_t type = 0;
    uint32_t deadline = 900; // seconds
    double interval = 5;     // seconds
    bool dry_run = false;
    const char *log = nullptr;
};

// clang-format off
inline constexpr Option<RolloutSettings> ROLLOUT_OPTIONS[] = {
    {{"mac", "LIST", "upgrade these devices, in this order (MAC,MAC,...)"},
     [](const char *text, RolloutSettings &to) {
         return to.mac == nullptr && parse_mac_list(to.mac = text, to.macs) && !to.macs.empty();
     }},
    {{"name", "GLOB", "upgrade the devices whose name matches the pattern"},
     [](const char *text, RolloutSettings &to) { return take_text(text, to.name); }},
    {{"all-managed", nullptr, "upgrade all devices under management"},
     [](const char *, RolloutSettings &to) { return take_flag(to.all_managed); }},
    {{"batch", "N", "how many devices at a time (10)"},
     [](const char *text, RolloutSettings &to) {
         return take_number<uint32_t>(text, 1, 10000, to.batch);
     }},
    {{"max-failures", "N", "stop after a batch when more than N devices failed (0)"},
     [](const char *text, RolloutSettings &to) {
         return take_number<uint32_t>(text, 0, UINT32_MAX, to.max_failures);
     }},
    {{"period", "SEC", "how long a device may be offline, for the controller (0)"},
     [](const char *text, RolloutSettings &to) {
         return take_number<uint32_t>(text, 0, INT32_MAX, to.period);
     }},
    {{"type", "N", "the controller's type of upgrade (0)", "0 1 2"},
     [](const char *text, RolloutSettings &to) {
         return take_number<uint32_t>(text, 0, 2, to.type);
     }},
    {{"deadline", "SEC", "give a device up after that time (900)"},
     [](const char *text, RolloutSettings &to) {
         return take_number<uint32_t>(text, 1, INT32_MAX, to.deadline);
     }},
    {{"interval", "SEC", "polling interval, 0.05 at least (5)"},
     [](const char *text, RolloutSettings &to) {
         return take_number<double>(text, 0.05, 3600, to.interval);
     }},
    {{"dry-run", nullptr, "print what would be done, and upgrade nothing"},
     [](const char *, RolloutSettings &to) { return take_flag(to.dry_run); }},
    {{"log", "FILE", "append a line for each event"},
     [](const char *text, RolloutSettings &to) { return take_text(text, to.log); }},
    ENDPOINT_OPTIONS,
};
// clang-format on

inline constexpr ProgramInfo ROLLOUT_PROGRAM = {
    "zov-rollout", "",
    "Upgrades the firmware of devices in batches, tracks each until it is back with its new\n"
    "version, and stops when too many fail. Started again, it goes on where it stopped.\n"
    "Exactly one of --mac, --name and --all-managed says which devices.\n"};
