// SPDX-License-Identifier: MIT
// What is wrong with a file: gathered first, since it is found in two walks, and printed in the
// order of its lines.
#pragma once

#include "check/lines.h"

#include <string>
#include <string_view>
#include <vector>

// Of a file with very many diagnostics the first MESSAGES_MAX are kept and printed, and the rest
// counted.
class Diagnostics {
public:
    enum : size_t { MESSAGES_MAX = 1000 };

    // To be called before each walk over the file, which finds diagnostics in the order of the
    // file.
    void begin_walk() { of_walk_ = 0; }

    // Whether what this walk finds from now on is counted only.
    [[nodiscard]] bool is_full() const { return of_walk_ >= MESSAGES_MAX; }

    // A fault of this value, or of the file as a whole (null). A line end behind the text is
    // dropped.
    void add(const json_value *at, std::string text);

    // Tells more of the last one: its line and the reason.
    void explain(unsigned line, const std::string &reason);

    [[nodiscard]] bool empty() const { return count_ == 0; }

    // Prints each on standard error, as "NAME:LINE: TEXT". The text and the root of the file tell
    // the lines; null: all lines are known.
    void print(std::string_view name, std::string_view text, const json_value *root);

private:
    struct Row {
        const json_value *at;
        ValuePlace place;
        std::string text;
    };
    std::vector<Row> rows_;
    size_t count_ = 0, of_walk_ = 0;
};
