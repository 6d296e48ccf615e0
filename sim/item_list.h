// SPDX-License-Identifier: MIT
// The item lists of configuration requests.
#pragma once

#include "setting.h"
#include "util/mac.h"

#include <string>
#include <string_view>
#include <vector>

struct ItemList {
    std::vector<Item> items;
    bool complete = true; // false: the bytes end within an item
};

// All bytes as items back to back.
ItemList parse_items(std::string_view bytes);

struct ConfigRequest {
    std::vector<Mac> macs;
    uint8_t kind = 0;
    int32_t wait = 0;
    bool several = false;
    std::vector<ItemList> lists; // one, or with `several` one for each device; none: malformed
};

// What follows the length of a set-configuration request.
ConfigRequest parse_config_request(std::string_view body);

// Applies the items to a configuration if every one of them can be. Returns what is wrong, or an
// empty text.
std::string apply_items(const ItemList &list, DeviceKind kind, WtpCfg &cfg, Arena &memory);

// The items of an add request: none, or one with five addresses.
bool is_ip_setting(const ItemList &list);
void set_address(WtpRecord &wtp, std::string_view addresses);
