// SPDX-License-Identifier: MIT
// What an apply begins with: the chosen devices, what differs on each, and in which batch it is
// changed.
#pragma once

#include "apply/differences.h"
#include "apply/merge.h"
#include "apply/options.h"
#include "apply/sources.h"

#include <map>
#include <string>
#include <vector>

struct PlannedDevice {
    Mac mac;
    std::string name, model;
    uint8_t kind = 0;      // as wtp_type
    std::string problem;   // why it cannot be compared, or cannot have what is wanted
    std::string busy_with; // why it cannot be changed now: "offline"; empty: it can
    std::vector<Difference> differences;
    std::string before; // the items of the members that differ, as they are stored
    size_t batch = 0;   // counted from 1; 0: it is in none

    [[nodiscard]] bool differs() const { return !differences.empty(); }
};

struct ApplyPlan {
    std::vector<PlannedDevice> devices;
    size_t batches = 0;
    std::vector<std::string> notes;
    std::map<std::pair<Mac, uint32_t>, std::string> connected; // by switch and port: a name

    [[nodiscard]] size_t removals() const;
};

// What a configuration is to be with these documents, and what of it is other now. `problem` says
// why it cannot be so; empty if it can.
struct WantedConfig {
    ConfigRow row;
    std::vector<Difference> differences;
    std::string problem;
    MergeResult merged;
};
WantedConfig want(const ConfigRow &stored, const std::vector<const Document *> &documents,
                  DeviceKind kind);

// The items of the members in which these differences are, with or without state.
std::string items_of_members(const ConfigRow &row, const std::vector<Difference> &differences,
                             DeviceKind kind, bool with_state);

// Asks for the chosen devices and compares them. Throws Failure, and UsageError for what would be
// given to more than one device, or cannot be compared.
ApplyPlan make_plan(const ApplySettings &settings, const Sources &sources);
