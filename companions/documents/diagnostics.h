// SPDX-License-Identifier: MIT
// What is wrong with a file: gathered first, since it is found in two walks, and put in the order
// of its lines.
#pragma once

#include "documents/lines.h"

#include <string>
#include <string_view>
#include <vector>

struct Diagnostic {
    std::string file;
    unsigned line = 0; // 0: the whole file
    bool is_error = true;
    std::string path; // of the value, with positions; "" for the whole file
    std::string message;
};

// Of a file with very many diagnostics the first MESSAGES_MAX are kept and the rest counted.
class Diagnostics {
public:
    enum : size_t { MESSAGES_MAX = 1000 };

    // With `strict` there are no warnings, but errors only.
    explicit Diagnostics(bool strict) : strict_(strict) {}

    // To be called before each walk over the file, which finds diagnostics in the order of the
    // file.
    void begin_walk() { of_walk_ = 0; }

    // Whether what this walk finds from now on is counted only.
    [[nodiscard]] bool is_full() const { return of_walk_ >= MESSAGES_MAX; }

    // A fault of this value, or of the file as a whole (null). "ERROR: " before the text and a line
    // end behind it are dropped.
    void add(const json_value *at, std::string text);

    // The same for what is sent as it stands, but has no effect.
    void warn(const std::string &text);

    // Tells more of the last one: its line and the reason.
    void explain(unsigned line, const std::string &reason);

    [[nodiscard]] bool has_errors() const { return errors_ > 0; }

    // All of them, in the order of the file. The text and the root of the file tell lines and
    // paths; null: all lines are known.
    std::vector<Diagnostic> take(std::string_view name, std::string_view text,
                                 const json_value *root);

private:
    struct Row {
        const json_value *at;
        ValuePlace place;
        bool is_error;
        std::string text;
    };
    bool strict_;
    std::vector<Row> rows_;
    size_t count_ = 0, errors_ = 0, of_walk_ = 0;
};

// "FILE:LINE: ERROR: MESSAGE", a line each, without control characters.
std::string text_of(const std::vector<Diagnostic> &diagnostics);
