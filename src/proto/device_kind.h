// SPDX-License-Identifier: MIT
// The kinds of devices, as the controller numbers them.
#pragma once

#include <cstdint>

enum DeviceKind : uint8_t { DEVICE_SWITCH = 2, DEVICE_ACCESS_POINT = 3 };
