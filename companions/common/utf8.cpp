// SPDX-License-Identifier: MIT
#include "common/utf8.h"

static constexpr char32_t REPLACEMENT = 0xFFFD;

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
    if (lead < 0x80)
        return {1, true, lead};
    const unsigned more = continuation_bytes(lead);
    if (more == 0)
        return {1, false, REPLACEMENT};
    unsigned char low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned char high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    char32_t code = lead & (0x3FU >> more);
    for (unsigned i = 1; i <= more; i++) {
        if (i == text.size() || byte(text[i]) < low || byte(text[i]) > high)
            return {i, false, REPLACEMENT};
        code = code << 6 | (byte(text[i]) & 0x3F);
        low = 0x80;
        high = 0xBF;
    }
    return {more + 1, true, code};
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
