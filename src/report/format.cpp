// SPDX-License-Identifier: MIT
#include "report/format.h"

#include "util/calendar.h"
#include "util/number.h"

#include <array>
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

// The letters that stand behind the backslash for escaped characters; 0 for all others.
static constexpr auto ESCAPE_LETTERS = [] {
    std::array<char, 256> letters = {};
    letters['\b'] = 'b';
    letters['\t'] = 't';
    letters['\n'] = 'n';
    letters['\f'] = 'f';
    letters['\r'] = 'r';
    for (const char c : {'"', '/', '\\'})
        letters[static_cast<unsigned char>(c)] = c;
    return letters;
}();

char *write_escaped(char *to, std::string_view text)
{
    for (const char c : text) {
        const char letter = ESCAPE_LETTERS[static_cast<unsigned char>(c)];
        if (letter != '\0')
            *to++ = '\\';
        *to++ = letter != '\0' ? letter : c;
    }
    return to;
}

void json_escape(Output &out, std::string_view text)
{
    enum : size_t { PIECE = Output::PREPARE_MAX / 2 };
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, PIECE);
        out.commit(write_escaped(out.prepare(2 * piece.size()), piece));
        text.remove_prefix(piece.size());
    }
}
