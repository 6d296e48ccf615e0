// SPDX-License-Identifier: MIT
// Where the values of a parsed file stand in its text; the parser keeps no lines.
#pragma once

#include <json-parser/json.h>
#include <string_view>
#include <unordered_map>
#include <vector>

// Values begin in the text in the order in which the tree has them, so the n-th beginning is the
// n-th value's.
class Lines {
public:
    Lines(std::string_view text, const json_value &root);

    // How many values begin before this one, and its line.
    [[nodiscard]] size_t position(const json_value &value) const { return positions_.at(&value); }
    [[nodiscard]] unsigned line(const json_value &value) const { return lines_[position(value)]; }

private:
    std::unordered_map<const json_value *, size_t> positions_;
    std::vector<unsigned> lines_; // by position
};
