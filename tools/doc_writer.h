// SPDX-License-Identifier: MIT
// How the generators write, to standard output: texts, and sentences of manual pages.
#pragma once

#include <iostream>
#include <string>
#include <string_view>

inline void put(const auto &...texts)
{
    for (const std::string_view text : {std::string_view(texts)...})
        std::cout << text;
}

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
