// SPDX-License-Identifier: MIT
#include "text.h"

#include <algorithm>
#include <array>
#include <cstdio>

static constexpr std::string_view REPLACEMENT = "\xEF\xBF\xBD"; // U+FFFD

enum : unsigned char {
    FIRST_PRINTABLE = 0x20,
    DEL = 0x7F,
    CONTINUATION_LOW = 0x80,
    C1_LEAD = 0xC2
};

static unsigned char byte(char c)
{
    return static_cast<unsigned char>(c);
}

// How many bytes follow a first byte.
static unsigned continuation_bytes(unsigned char lead)
{
    if (lead < 0xC2 || lead > 0xF4)
        return 0;
    return lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
}

// The second byte has closer bounds where the shortest form, surrogates and the last character of
// Unicode ask for it.
Utf8Character first_character(std::string_view text)
{
    const unsigned char lead = byte(text[0]);
    if (lead < CONTINUATION_LOW)
        return {1, true, lead < FIRST_PRINTABLE || lead == DEL};
    const unsigned more = continuation_bytes(lead);
    if (more == 0)
        return {1, false, false};
    unsigned char low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned char high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    for (unsigned i = 1; i <= more; i++) {
        if (i == text.size() || byte(text[i]) < low || byte(text[i]) > high)
            return {i, false, false};
        low = 0x80;
        high = 0xBF;
    }
    return {more + 1, true, lead == C1_LEAD && byte(text[1]) < 0xA0};
}

bool is_utf8(std::string_view text)
{
    while (!text.empty()) {
        const Utf8Character next = first_character(text);
        if (!next.valid)
            return false;
        text.remove_prefix(next.length);
    }
    return true;
}

static char *write_bytes(char *to, std::string_view bytes)
{
    return std::copy(bytes.begin(), bytes.end(), to);
}

// A control character, whose code is its last byte.
static char *write_escape(char *to, unsigned char code)
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
        if (PLAIN[byte(text[0])]) {
            *to++ = text[0];
            text.remove_prefix(1);
            continue;
        }
        const Utf8Character next = first_character(text);
        const std::string_view bytes = text.substr(0, next.length);
        text.remove_prefix(next.length);
        if (!next.valid) {
            to = write_bytes(to, REPLACEMENT);
        } else if (next.control) {
            to = write_escape(to, byte(bytes.back()));
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
        to += next.valid && !next.control ? text.substr(0, next.length) : REPLACEMENT;
        text.remove_prefix(next.length);
    }
}

std::string clean(std::string_view text)
{
    std::string made;
    append_clean(made, text);
    return made;
}
