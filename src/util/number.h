// SPDX-License-Identifier: MIT
// Numbers as decimal text.
#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>

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

inline char *write_number(char *to, int32_t number)
{
    if (number >= 0)
        return write_number(to, static_cast<uint32_t>(number));
    *to = '-';
    return write_number(to + 1, 0U - static_cast<uint32_t>(number));
}

// The numbers of a byte and their lengths, ready to be copied: addresses have no digits that a
// branch could foresee.
struct ByteText {
    char digits[3];
    uint8_t length;
};
inline constexpr auto BYTE_TEXTS = [] {
    std::array<ByteText, 256> texts = {};
    for (unsigned n = 0; n < texts.size(); n++) {
        ByteText &text = texts[n];
        for (const unsigned unit : {100U, 10U, 1U})
            if (n >= unit || unit == 1)
                text.digits[text.length++] = static_cast<char>('0' + n / unit % 10);
    }
    return texts;
}();

// The same for a number of at most three digits; touches four bytes.
inline char *write_number(char *to, uint8_t number)
{
    const ByteText &text = BYTE_TEXTS[number];
    memcpy(to, &text, sizeof text);
    return to + text.length;
}
