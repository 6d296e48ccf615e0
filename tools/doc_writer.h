// SPDX-License-Identifier: MIT
// How the generators write, to standard output: texts, JSON, and sentences of manual pages.
#pragma once

#include <cstdint>
#include <iostream>
#include <string>
#include <string_view>

inline void put(const auto &...texts)
{
    for (const std::string_view text : {std::string_view(texts)...})
        std::cout << text;
}

// The members of nested objects, indented, on standard output.
class JsonPrinter {
public:
    void open(std::string_view name)
    {
        start(name);
        put("{");
        depth_++;
        first_ = true;
    }
    void close()
    {
        depth_--;
        first_ = false;
        new_line();
        put("}");
    }
    void text(std::string_view name, std::string_view value)
    {
        start(name);
        quote(value);
    }
    void number(std::string_view name, int64_t value) { literal(name, std::to_string(value)); }
    void literal(std::string_view name, std::string_view value)
    {
        start(name);
        put(value);
    }

private:
    void start(std::string_view name)
    {
        put(first_ ? "" : ",");
        first_ = false;
        new_line();
        quote(name);
        put(": ");
    }
    void new_line() const { put("\n", std::string(2 * depth_, ' ')); }
    static void quote(std::string_view value)
    {
        put("\"");
        for (const char &c : value)
            put(c == '"' || c == '\\' ? "\\" : "", std::string_view(&c, 1));
        put("\"");
    }

    size_t depth_ = 1;
    bool first_ = true;
};

// Each sentence on a line of its own, minus signs as such.
inline void put_sentences(std::string_view text)
{
    std::string lines;
    for (const char c : text) {
        const char last = lines.empty() ? ' ' : lines.back();
        if (c == ' ' && last == '.')
            lines += '\n';
        else if (c == '-' && last == ' ')
            lines += "\\-";
        else
            lines += c;
    }
    put(lines, "\n");
}
