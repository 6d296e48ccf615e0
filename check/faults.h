// SPDX-License-Identifier: MIT
// What is wrong with a file: gathered first, since it is found in two walks, and printed in the
// order of its lines.
#pragma once

#include <json-parser/json.h>
#include <string>
#include <string_view>
#include <vector>

class Faults {
public:
    // A fault of this value, or of the file as a whole (null). A line end behind the text is
    // dropped.
    void add(const json_value *at, std::string text);

    // Tells more of the last one: its line and the reason.
    void explain(unsigned line, const std::string &reason);

    [[nodiscard]] bool empty() const { return rows_.empty(); }

    // Prints each on standard error, as "NAME:LINE: TEXT". The text and the root of the file tell
    // the lines; null: all lines are known.
    void print(std::string_view name, std::string_view text, const json_value *root);

private:
    struct Row {
        const json_value *at;
        size_t position;
        unsigned line; // 0: none
        std::string text;
    };
    std::vector<Row> rows_;
};
