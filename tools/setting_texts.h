// SPDX-License-Identifier: MIT
// The titles and descriptions of settings.def, for the generators.
#pragma once

#include "config/config_keys.h"

#include <string_view>

// Those of a row; empty for SAME.
struct SettingText {
    std::string_view path;
    std::string_view title;
    std::string_view description;
    unsigned marks = 0; // of ConfigMark
};

inline constexpr SettingText SETTING_TEXTS[] = {
#define SAME                                                                                       \
    {}, {}
#define AP(id, form, min, max, path, ...) {path, __VA_ARGS__},
#define SWITCH AP
#define COUNT(id, path, ...) {path, __VA_ARGS__},
#define GROUP(path, ...) {path, __VA_ARGS__},
#include "config/settings.def"
#undef SAME
};

// The last two names of a path.
inline std::string_view last_names(std::string_view path)
{
    const size_t dot = path.rfind('.');
    return dot == std::string_view::npos ? path : path.substr(path.rfind('.', dot - 1) + 1);
}

// The texts of a path's row; where they are those of another row, the first with the same last two
// names. Null when there are none.
inline const SettingText *find_setting_text(std::string_view path)
{
    for (const SettingText &text : SETTING_TEXTS)
        if (last_names(text.path) == last_names(path) && !text.title.empty())
            return &text;
    return nullptr;
}
