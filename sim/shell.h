// SPDX-License-Identifier: MIT
// What simulated devices answer to shell commands. Nothing is run.
#pragma once

#include "sim/fleet.h"

#include <string>

// The output of a command on a device. `type`: 0 all, 1 standard output, 2 standard error.
std::string canned_output(const Device &device, const std::string &command, uint8_t type);
