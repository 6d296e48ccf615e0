// SPDX-License-Identifier: MIT
// The settings of a kind of device as tables: the device is a row of one, and so is each element of
// an array, such as a radio or a port.
#pragma once

#include "config/config_keys.h"

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

struct SettingTable;

// A setting of a row, or a table within it.
struct SettingColumn {
    std::string name;                          // below the row, as the layout has it: "channel.val"
    std::vector<std::string> parts;            // of the name, without []
    std::string_view path;                     // as in the settings' table
    size_t member = 0;                         // the member of wtp_cfg that it belongs to
    const ConfigKey *key = nullptr;            // of a setting; a list that is one setting is one
    const ConfigArray *count = nullptr;        // of a table whose length is an item
    size_t texts = 0;                          // of a table that is a list of texts: how many
    std::unique_ptr<const SettingTable> table; // null: a setting

    [[nodiscard]] bool has_mark(ConfigMark mark) const
    {
        return ((key != nullptr ? key->marks : count != nullptr ? count->marks : 0) & mark) != 0;
    }
};

struct SettingTable {
    enum : size_t { NONE = SIZE_MAX };

    DeviceKind kind = DEVICE_ACCESS_POINT;
    std::vector<SettingColumn> columns; // in the order of the settings' tree
    size_t port = NONE;                 // the column that tells rows apart; NONE: their positions
    std::unordered_map<std::string_view, size_t> by_name, by_path;

    // The column of a name or a path in this table, or NONE.
    [[nodiscard]] size_t find(std::string_view name) const;
    [[nodiscard]] size_t find_path(std::string_view path) const;
};

// The table whose row is a device. It lasts as long as the program.
const SettingTable &setting_table(DeviceKind kind);
