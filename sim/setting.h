// SPDX-License-Identifier: MIT
// Applies configuration items to a stored configuration.
#pragma once

#include "config/config_keys.h"
#include "device/wtp_record.h"

#include <string>
#include <string_view>

// One item as it came over the wire.
struct Item {
    uint16_t type = 0;
    std::string index;
    std::string value;
};

// Applies one item of a device of the given kind, whose texts and tables live in `memory`; settings
// that no record carries are accepted and forgotten. Returns what is wrong with the item, or an
// empty text.
std::string apply_item(const Item &item, DeviceKind kind, WtpCfg &cfg, Arena &memory);
