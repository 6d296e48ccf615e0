// SPDX-License-Identifier: MIT
// In which order devices are worked on, and how many at a time.
#pragma once

#include "util/mac.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

// A number of devices, or a percentage of them.
struct Share {
    uint32_t number = 0;
    bool percent = false;

    [[nodiscard]] size_t of(size_t devices) const
    {
        return percent ? devices * number / 100 : number;
    }
};

// "25" or "25%": a number from `low` on, or a percentage up to 100. False for anything else.
bool take_share(const char *text, uint32_t low, Share &share);

// "1,10,25%": the sizes of the batches in turn, the last of which repeats. A batch has at least one
// device.
bool take_batch_sizes(const char *text, std::vector<Share> &sizes);

// What decides about the place of a device.
struct BatchDevice {
    Mac mac;
    std::string name;
    uint8_t kind = 0; // as wtp_type
};

// Which devices each switch is connected to.
using SwitchLinks = std::map<Mac, std::set<Mac>>;

struct BatchPlan {
    std::vector<Share> sizes;
    size_t chosen = 0;       // devices that a percentage is of
    bool keep_order = false; // of the devices as they are given
    SwitchLinks links;
};

// The devices, as positions in the array, in batches. A batch holds one kind: access points, then
// others, then switches. A batch takes as few devices as possible from one switch, and of those
// that no switch lists, names that are far apart. Switches at the edge come before those that they
// are connected to, and are in no batch with them.
std::vector<std::vector<size_t>> make_batches(const std::vector<BatchDevice> &devices,
                                              const BatchPlan &plan);
