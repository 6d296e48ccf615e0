// SPDX-License-Identifier: MIT
// What every tool that changes devices asks of the controller, each on a connection of its own. All
// throw Failure.
#pragma once

#include "common/connection.h"
#include "common/topology.h"

#include <functional>
#include <vector>

// The controller may have done what it was asked for, but its reply did not come.
struct Unanswered : Failure {
    using Failure::Failure;
};

// How many devices are asked about in one request, of the 10,922 that fit it.
inline constexpr size_t REQUEST_MAX = 10000;

// So many of the addresses, from `first` on.
MacList to_mac_list(const std::vector<Mac> &macs, size_t first, size_t count);

// Lists these devices without configuration and detail, or all if there is none or there are many.
// The record holds its basic members only, and only during the call.
using TakeRecord = std::function<void(const WtpRecord &)>;
void list_devices(const Endpoint &endpoint, const std::vector<Mac> &macs, const TakeRecord &take);

// Lists these devices with their configurations.
void list_configurations(const Endpoint &endpoint, const std::vector<Mac> &macs,
                         const TakeRecord &take);

// What is connected to these switches.
Topology list_topology(const Endpoint &endpoint, const std::vector<Mac> &switches);
