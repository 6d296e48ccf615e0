// SPDX-License-Identifier: MIT
#include "export/text.h"

#include <algorithm>
#include <array>

static constexpr std::string_view REPLACEMENT = "\xEF\xBF\xBD"; // U+FFFD

enum : unsigned char { FIRST_PRINTABLE = 0x20, DEL = 0x7F };

static char *write_bytes(char *to, std::string_view bytes)
{
    return std::copy(bytes.begin(), bytes.end(), to);
}

static char *write_escape(char *to, char32_t code)
{
    static constexpr std::string_view NAMED = "\b\t\n\f\r", LETTERS = "btnfr";
    *to++ = '\\';
    const size_t name = NAMED.find(static_cast<char>(code));
    if (name != std::string_view::npos) {
        *to++ = LETTERS[name];
        return to;
    }
    static constexpr char DIGITS[] = "0123456789abcdef";
    to = write_bytes(to, "u00");
    *to++ = DIGITS[code >> 4];
    *to++ = DIGITS[code & 15];
    return to;
}

// The bytes that stand for themselves.
static constexpr auto PLAIN = [] {
    std::array<bool, 256> plain = {};
    for (size_t c = FIRST_PRINTABLE; c < DEL; c++)
        plain[c] = c != '"' && c != '\\';
    return plain;
}();

char *write_json_text(char *to, std::string_view text)
{
    while (!text.empty()) {
        if (PLAIN[static_cast<unsigned char>(text[0])]) {
            *to++ = text[0];
            text.remove_prefix(1);
            continue;
        }
        const Utf8Character next = first_character(text);
        const std::string_view bytes = text.substr(0, next.length);
        text.remove_prefix(next.length);
        if (!next.valid) {
            to = write_bytes(to, REPLACEMENT);
        } else if (next.is_control()) {
            to = write_escape(to, next.code);
        } else {
            if (bytes[0] == '"' || bytes[0] == '\\')
                *to++ = '\\';
            to = write_bytes(to, bytes);
        }
    }
    return to;
}

void append_json_string(std::string &to, std::string_view text)
{
    const size_t before = to.size();
    to.resize(before + JSON_GROWTH * text.size() + 2);
    char *at = to.data() + before;
    *at++ = '"';
    at = write_json_text(at, text);
    *at++ = '"';
    to.resize(static_cast<size_t>(at - to.data()));
}

void append_clean(std::string &to, std::string_view text)
{
    while (!text.empty()) {
        const Utf8Character next = first_character(text);
        to += next.valid && !next.is_control() ? text.substr(0, next.length) : REPLACEMENT;
        text.remove_prefix(next.length);
    }
}

std::string clean(std::string_view text)
{
    std::string made;
    append_clean(made, text);
    return made;
}
