// SPDX-License-Identifier: MIT
// The members of configuration files, as the settings' table has them.
#pragma once

#include "config/config_keys.h"

#include <string>
#include <string_view>
#include <vector>

// An object, an array of objects (its field is a table), a setting, or a list that is one setting.
struct CfgMember {
    std::string name;
    std::string field; // of a setting or a table: what the layout calls it within its table
    std::string path;  // as in the settings' table
    const ConfigKey *row = nullptr;
    bool is_array = false;
    std::vector<CfgMember> members;
    mutable size_t place = 0; // where its field was found last
};

// The members of the object wtp_cfg of a kind of device.
std::vector<CfgMember> make_cfg_members(DeviceKind kind);
