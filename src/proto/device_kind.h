// SPDX-License-Identifier: MIT
// The kinds of devices, as the controller numbers them.
#pragma once

#include <cstdint>

enum DeviceKind : uint8_t { DEVICE_SWITCH = 2, DEVICE_ACCESS_POINT = 3 };

// The two that can be configured.
inline DeviceKind other_kind(DeviceKind kind)
{
    return kind == DEVICE_SWITCH ? DEVICE_ACCESS_POINT : DEVICE_SWITCH;
}

// What --type of zov cfg stands for.
inline DeviceKind kind_of_type(uint8_t type)
{
    return type == 1 ? DEVICE_SWITCH : DEVICE_ACCESS_POINT;
}
