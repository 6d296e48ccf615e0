// SPDX-License-Identifier: MIT
// The request that changes configurations.
#pragma once

#include "course/requests.h"
#include "proto/device_kind.h"

#include <string>
#include <string_view>

struct SetAnswer {
    uint8_t code = 0;
    std::string message; // without "ERROR: " and line ends
};

// Sends devices of one kind their items, REQUEST_MAX at most. `choose` says to which, when the
// controller has admitted the client and no signal can come in between; none: nothing is sent.
// `items_of` gives a device's items with their end. Gives an answer for each device; throws
// Failure, and Unanswered when the request may have been carried out.
std::vector<SetAnswer>
set_configurations(const Endpoint &endpoint, DeviceKind kind,
                   const std::function<std::vector<Mac>()> &choose,
                   const std::function<std::string_view(const Mac &)> &items_of);
