// SPDX-License-Identifier: MIT
// The settings of a kind of device as the tree that its configuration files have.
#pragma once

#include "config/config_keys.h"

#include <string>
#include <string_view>
#include <vector>

// A member of a configuration file: a setting, a list of values that is one setting (it has a row
// and is an array), an object, or an array of objects.
struct SettingNode {
    std::string_view name;
    std::string_view path; // ends with [] when it is an array
    const ConfigKey *row = nullptr;
    std::vector<SettingNode> members;

    [[nodiscard]] bool is_array() const { return path.ends_with("[]"); }

    // The elements that an array can have in a file. Devices have so many radios, say, and not
    // none; a WLAN has four WEP keys.
    [[nodiscard]] uint32_t elements_max() const;
    [[nodiscard]] uint32_t elements_min() const;

    // Whether it is an array whose elements are told apart by their member "port".
    [[nodiscard]] bool is_by_port() const;

    // The member of that name, or null.
    [[nodiscard]] const SettingNode *find(std::string_view member) const;
};

// The end of the comment of an exported configuration, which says how to send it; and the kind that
// a comment says so of, or 0.
std::string sending_hint(DeviceKind kind);
uint8_t kind_in_comment(std::string_view comment);

// The root has the one member wtp_cfg. All that is in it stands in the order of the key table.
SettingNode settings_tree(DeviceKind kind);
