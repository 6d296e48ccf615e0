// SPDX-License-Identifier: MIT
// Where the values of a parsed file stand in its text; the parser keeps no lines.
#pragma once

#include <json-parser/json.h>
#include <string>
#include <string_view>
#include <unordered_map>

struct ValuePlace {
    size_t position = 0; // how many values begin before it
    unsigned line = 0;   // 0: not known
    std::string path;    // the names of members and, in brackets, positions on the way to it
};
using ValuePlaces = std::unordered_map<const json_value *, ValuePlace>;

// Fills in the places of those values of the file that `places` has. Values begin in the text in
// the order in which the tree has them, so the n-th beginning is the n-th value's.
void find_places(std::string_view text, const json_value &root, ValuePlaces &places);
