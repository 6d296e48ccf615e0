// SPDX-License-Identifier: MIT
// What a roll-out asks of the controller besides, each on a connection of its own. All throw
// Failure.
#pragma once

#include "course/requests.h"

#include <functional>
#include <map>
#include <vector>

// What the controller knows of firmware for devices.
struct FirmwareSteps {
    std::map<Mac, uint8_t> codes;  // a result code for each
    std::map<Mac, unsigned> steps; // 1 or 2, of those that can upgrade
};
FirmwareSteps ask_firmware_steps(const Endpoint &endpoint, const std::vector<Mac> &macs);

// Starts upgrades, of REQUEST_MAX devices at most. `choose` says of which, when the controller has
// admitted the client and no signal can come in between; none: nothing is sent. Gives a result code
// for each device; throws Unanswered when the request may have been accepted.
std::vector<uint8_t> start_upgrades(const Endpoint &endpoint,
                                    const std::function<std::vector<Mac>()> &choose,
                                    uint32_t period, uint32_t type);
