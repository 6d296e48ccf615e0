// SPDX-License-Identifier: MIT
// What the schemas and the manual page say of the settings in configuration files.
#pragma once

#include <string_view>

// The text of a setting, or of a group of settings. Its key is the last two names of the setting's
// path, so that the groups that occur in several places (portals, band steering) share their texts.
struct SettingText {
    std::string_view key; // empty in the row that ends the table
    std::string_view title;
    std::string_view description; // sentences; each ends with a full stop
};

extern const SettingText SETTING_TEXTS[];

// mdoc source: what the manual page says before and after the settings.
extern const char MANUAL_HEAD[];
extern const char MANUAL_TAIL[];
