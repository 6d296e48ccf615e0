// SPDX-License-Identifier: MIT
// Which name was meant.
#pragma once

#include <string_view>
#include <vector>

// The name that differs from `word` by the fewest letters inserted, left out, replaced or swapped
// with their neighbour, whatever their case; the first of several. Empty when none is near: a third
// of the word's letters may differ, but one always.
std::string_view nearest_name(std::string_view word, const std::vector<std::string_view> &names);
