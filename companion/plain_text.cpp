// SPDX-License-Identifier: MIT
#include "plain_text.h"

#include <cstdint>
#include <cstdio>

static bool in(unsigned char c, unsigned low, unsigned high)
{
    return c >= low && c <= high;
}

size_t utf8_length(std::string_view text)
{
    const auto byte = [&](size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : uint8_t{0};
    };
    const unsigned char first = byte(0);
    if (first < 0x80)
        return 1;
    // No longer forms than needed, no surrogates, nothing above U+10FFFF.
    const unsigned low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const unsigned high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    const size_t length = in(first, 0xC2, 0xDF)   ? 2
                          : in(first, 0xE0, 0xEF) ? 3
                          : in(first, 0xF0, 0xF4) ? 4
                                                  : 0;
    if (length == 0 || !in(byte(1), low, high))
        return 0;
    for (size_t i = 2; i < length; i++)
        if (!in(byte(i), 0x80, 0xBF))
            return 0;
    return length;
}

// The number of a character of two or three bytes, or of an ASCII one; 0 for others, which are no
// controls.
static unsigned code_point(std::string_view character)
{
    unsigned code = static_cast<unsigned char>(character[0]);
    if (character.size() == 1)
        return code;
    code &= character.size() == 2 ? 0x1F : 0x0F;
    for (const char c : character.substr(1))
        code = code << 6 | (static_cast<unsigned char>(c) & 0x3F);
    return character.size() == 4 ? 0 : code;
}

// What moves the cursor, changes the terminal or the direction of writing.
static bool is_control(std::string_view character)
{
    const unsigned code = code_point(character);
    return (code < 0x20 && character.size() == 1) || (code >= 0x7F && code <= 0x9F) ||
           (code >= 0x200E && code <= 0x200F) || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

// The text with what `replace` makes of each control character and of each bad byte (empty).
template <class Replace> static std::string cleaned(std::string_view text, Replace replace)
{
    std::string clean;
    while (!text.empty()) {
        const size_t length = utf8_length(text);
        const std::string_view character = text.substr(0, length);
        if (length == 0 || is_control(character))
            clean += replace(character);
        else
            clean += character;
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return clean;
}

std::string plain_text(std::string_view text)
{
    return cleaned(text, [](std::string_view) { return "?"; });
}

std::string quoted_text(std::string_view text)
{
    std::string escaped;
    for (const char c : text) {
        if (c == '"' || c == '\\')
            escaped += '\\';
        escaped += c;
    }
    return '"' +
           cleaned(escaped,
                   [](std::string_view character) -> std::string {
                       char code[] = "\\u0000";
                       if (character.empty())
                           return "\xEF\xBF\xBD";
                       snprintf(code, sizeof code, "\\u%04x", code_point(character) & 0xFFFF);
                       return code;
                   }) +
           '"';
}
