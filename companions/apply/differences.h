// SPDX-License-Identifier: MIT
// What of a configuration is other than in another.
#pragma once

#include "documents/config_row.h"

#include <cstdint>
#include <string>
#include <vector>

struct Difference {
    enum Kind : uint8_t { changed, added, removed } kind = changed;
    std::string path, label; // with positions; the SSID of a WLAN
    const SettingColumn *column = nullptr;
    std::string from, to; // bytes; both empty where a table's element has come or gone
    uint32_t port = 0;    // that it is about, where it is about one
    size_t member = 0;    // of wtp_cfg

    bool operator==(const Difference &other) const
    {
        return kind == other.kind && path == other.path && from == other.from && to == other.to;
    }
};

// What of a configuration is other than in the one before, state aside. What is not known in
// `after` is no difference.
std::vector<Difference> compare(const ConfigRow &before, const ConfigRow &after, DeviceKind kind);

// Whether two values mean the same: their bytes are the same, or they are lists of addresses or
// JSON documents that differ in their order or spelling only.
bool is_same_value(const ConfigKey &key, const std::string &one, const std::string &other);

// "radio[0].wlan", "poe_port": an array's path below an element or the device.
std::string array_path(const std::string &above, const SettingColumn &column);

// "~ radio[0].wlan[1].vlan 3 -> 4 (ssid "guest")", without control characters and secrets.
std::string difference_text(const Difference &difference, DeviceKind kind);
std::string value_text_of(const SettingColumn &column, DeviceKind kind, const std::string &bytes);
