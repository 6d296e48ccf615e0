// SPDX-License-Identifier: MIT
// The check that zov cfg does without: whether the members of a file are settings, stand where they
// belong and are there once.
#pragma once

#include "documents/diagnostics.h"
#include "documents/settings_tree.h"

#include <unordered_map>

// The settings of a kind of device, and those of the other kind for the messages.
struct KnownMembers {
    explicit KnownMembers(DeviceKind of);

    DeviceKind kind;
    SettingNode root;
    std::unordered_map<std::string_view, const ConfigKey *> rows; // by their paths

    [[nodiscard]] const ConfigKey *row_of(std::string_view path) const
    {
        const auto found = rows.find(path);
        return found == rows.end() ? nullptr : found->second;
    }
};

void check_members(const KnownMembers &known, const json_value &root, Diagnostics &diagnostics);
