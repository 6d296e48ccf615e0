// SPDX-License-Identifier: MIT
// What every plan begins with: the chosen devices in their order, and what is connected to them.
#pragma once

#include "common/selection.h"
#include "common/topology.h"
#include "course/batches.h"

#include <algorithm>
#include <set>
#include <vector>

// Throws Failure for a pattern that matches no name, and for an exclusion that excludes nothing.
void check_choice(const SelectionCheck &check);

// Addresses that were given come first, in their order; an address that came twice comes once.
// Throws Failure when there is no device.
template <class Device> void order_as_chosen(std::vector<Device> &devices, const Selection &chosen)
{
    const auto place = [&](const Device &device) {
        const auto found = chosen.macs.find(device.mac);
        return found == chosen.macs.end() ? chosen.macs.size() : found->second;
    };
    std::stable_sort(devices.begin(), devices.end(),
                     [&](const Device &a, const Device &b) { return place(a) < place(b); });
    std::set<Mac> known;
    std::erase_if(devices, [&](const Device &one) { return !known.insert(one.mac).second; });
    if (devices.empty())
        throw Failure("no device is chosen");
}

// The links of these switches, at either end.
SwitchLinks links_of(const Topology &topology, const std::vector<Mac> &switches);
