// SPDX-License-Identifier: MIT
#include "report/format.h"

#include "util/calendar.h"
#include "util/number.h"

#include <cstdio>
#include <cstring>

char *write_digest(char *to, const Md5Digest &digest)
{
    static const char digits[] = "0123456789abcdef";
    for (const uint8_t byte : digest.byte) {
        *to++ = digits[byte >> 4];
        *to++ = digits[byte & 15];
    }
    return to;
}

char *write_duration(char *to, uint32_t seconds)
{
    to = write_number(to, seconds / 86400);
    *to++ = 'd';
    *to++ = ':';
    to = write_number(to, seconds % 86400 / 3600);
    *to++ = 'h';
    *to++ = ':';
    to = write_number(to, seconds % 3600 / 60);
    *to++ = 'm';
    *to++ = ':';
    to = write_number(to, seconds % 60);
    *to++ = 's';
    return to;
}

const char *data_rate_text(int32_t code)
{
    static char text[16];
    if (code == 0)
        return "auto";
    if (code < 33)
        snprintf(text, sizeof text, "MCS%lld", static_cast<long long>(code) - 1);
    else if (code <= 110)
        snprintf(text, sizeof text, "VHTMCS%d", code - 101);
    else if (code % 1000 > 99)
        snprintf(text, sizeof text, "%d.%dM", code / 1000, code % 1000 / 100);
    else
        snprintf(text, sizeof text, "%dM", code / 1000);
    return text;
}

const char *time_text(uint32_t seconds)
{
    return seconds == 0 ? "\n" : calendar_text(seconds);
}

// The letter that stands behind the backslash for an escaped character; 0 for all others.
static char escape_letter(char c)
{
    switch (c) {
    case '\b':
        return 'b';
    case '\t':
        return 't';
    case '\n':
        return 'n';
    case '\f':
        return 'f';
    case '\r':
        return 'r';
    case '"':
    case '/':
    case '\\':
        return c;
    default:
        return '\0';
    }
}

char *write_escaped(char *to, std::string_view text)
{
    for (const char c : text) {
        const char letter = escape_letter(c);
        if (letter != '\0')
            *to++ = '\\';
        *to++ = letter != '\0' ? letter : c;
    }
    return to;
}

void json_escape(Output &out, std::string_view text)
{
    enum : size_t { PIECE = Output::ROOM_MAX / 2 };
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, PIECE);
        out.advance(write_escaped(out.room(2 * piece.size()), piece));
        text.remove_prefix(piece.size());
    }
}
