// SPDX-License-Identifier: MIT
// Characters of UTF-8 (RFC 3629), from texts that can hold any bytes.
#pragma once

#include <string_view>

struct Utf8Character {
    unsigned length; // in bytes, at least 1
    bool valid;      // false: the bytes are no character, and stand for one U+FFFD
    char32_t code;   // U+FFFD when it is not valid

    // C0, DEL or C1.
    bool is_control() const { return code < 0x20 || (code >= 0x7F && code <= 0x9F); }
};

// What a text that is not empty begins with. Of bytes that are no character as many are taken as
// could have begun one.
Utf8Character first_character(std::string_view text);

bool is_utf8(std::string_view text);
