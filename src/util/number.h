// SPDX-License-Identifier: MIT
// Numbers as decimal text.
#pragma once

#include <charconv>
#include <cstdint>

// Lengths of texts never count a terminator. This is the longest 64-bit number with its sign.
enum : unsigned { NUMBER_TEXT_MAX = 20 };

// Writes the number without a terminator and returns its end. Most numbers of a report are flags
// and small codes, so single digits take a short way.
inline char *write_number(char *to, uint32_t number)
{
    if (number < 10) {
        *to = static_cast<char>('0' + number);
        return to + 1;
    }
    return std::to_chars(to, to + NUMBER_TEXT_MAX, number).ptr;
}

// The same for a number of at most three digits.
inline char *write_number(char *to, uint8_t number)
{
    if (number >= 100)
        *to++ = static_cast<char>('0' + number / 100);
    if (number >= 10)
        *to++ = static_cast<char>('0' + number / 10 % 10);
    *to++ = static_cast<char>('0' + number % 10);
    return to;
}

inline char *write_number(char *to, int32_t number)
{
    return std::to_chars(to, to + NUMBER_TEXT_MAX, number).ptr;
}
