// SPDX-License-Identifier: MIT
// Tables for people: columns as wide as their widest text; what does not fit the last one goes on
// below it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

using TableRow = std::vector<std::string>;

// The lines of a table of at most so many columns of a terminal, if what stands before the last
// column allows it. The first row is the head. Numbers of `number_column` end, texts begin, one
// below the other. All rows have the same length.
std::vector<std::string> table_lines(const std::vector<TableRow> &rows, size_t number_column,
                                     size_t columns);

// At most so many characters of a text, without control characters; what was cut ends in "...".
std::string shortened(std::string_view text, size_t most);

// A device's name and its version, shortened for a table; - for an empty one.
std::string name_text(const std::string &name);
std::string version_text(const std::string &version);
