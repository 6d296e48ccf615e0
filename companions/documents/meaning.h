// SPDX-License-Identifier: MIT
// Whether what is sent of a value means what its text shows.
#pragma once

#include "config/config_keys.h"

#include <string>
#include <string_view>

// The text of the bytes that were made of a text or a number, as reports show them; of a list's
// element those of the element.
std::string shown_value(const ConfigKey &row, std::string_view bytes);

// Whether two texts of values mean the same: leading zeros, the case of hexadecimal digits, the
// zeros at the end of a rate, and an empty address for 0.0.0.0 make no difference. Of passwords,
// which cannot be shown, all do.
bool mean_the_same(const ConfigKey &row, std::string_view text, std::string_view shown);
