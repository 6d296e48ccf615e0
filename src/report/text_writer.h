// SPDX-License-Identifier: MIT
// Writes the lines of a text report: a label with its tabs, a value, a line end.
#pragma once

#include "report/format.h"
#include "util/number.h"
#include "util/output.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

class TextWriter {
public:
    explicit TextWriter(Output &out) : out_(out) {}

    template <size_t N, class Value> void line(const char (&label)[N], const Value &value)
    {
        item(label, value);
        out_.put('\n');
    }

    // A label and its value, without a line end.
    template <size_t N> void item(const char (&label)[N], uint32_t number)
    {
        out_.advance(write_number(begin(label, NUMBER_TEXT_MAX), number));
    }
    template <size_t N> void item(const char (&label)[N], int32_t number)
    {
        out_.advance(write_number(begin(label, NUMBER_TEXT_MAX), number));
    }
    template <size_t N> void item(const char (&label)[N], const Mac &mac)
    {
        out_.advance(write_mac(begin(label, MAC_TEXT_MAX), mac));
    }
    template <size_t N> void item(const char (&label)[N], Ipv4 addr)
    {
        out_.advance(write_ipv4(begin(label, IPV4_TEXT_MAX), addr));
    }
    template <size_t N> void item(const char (&label)[N], const Md5Digest &digest)
    {
        out_.advance(write_digest(begin(label, DIGEST_TEXT_MAX), digest));
    }
    template <size_t N> void item(const char (&label)[N], std::string_view text)
    {
        if (text.size() > Output::ROOM_MAX / 2) {
            out_.put(label, N - 1);
            out_.put(text.data(), text.size());
            return;
        }
        out_.advance(std::copy(text.begin(), text.end(), begin(label, text.size())));
    }
    template <size_t N> void duration(const char (&label)[N], uint32_t seconds)
    {
        out_.advance(write_duration(begin(label, DURATION_TEXT_MAX), seconds));
        out_.put('\n');
    }

    // The flags in hexadecimal, a blank after each.
    template <size_t N> void line(const char (&label)[N], const CfgCap &cap)
    {
        static const char digits[] = "0123456789abcdef";
        char *to = begin(label, sizeof cap.flag * strlen("0xff ") + 1);
        for (const uint8_t flag : cap.flag) {
            *to++ = '0';
            *to++ = 'x';
            if (flag > 15)
                *to++ = digits[flag >> 4];
            *to++ = digits[flag & 15];
            *to++ = ' ';
        }
        *to++ = '\n';
        out_.advance(to);
    }

    // A line of its own, or the end of one: `text` holds the line end.
    template <size_t N> void put(const char (&text)[N]) { out_.put(text, N - 1); }

private:
    template <size_t N> char *begin(const char (&label)[N], size_t room)
    {
        char *to = out_.room(N + room);
        memcpy(to, label, N - 1);
        return to + N - 1;
    }

    Output &out_;
};
