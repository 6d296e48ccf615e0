// SPDX-License-Identifier: MIT
// Writes the lines of a text report: a label with its tabs, a value, a line end.
#pragma once

#include "report/format.h"
#include "util/number.h"
#include "util/output.h"

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

template <class Value>
concept NoText = !std::convertible_to<const Value &, std::string_view>;

class TextWriter {
public:
    explicit TextWriter(Output &out) : out_(out) {}

    template <size_t N, class Value> void line(const char (&label)[N], const Value &value)
    {
        write(label, value, "\n");
    }

    // A label and its value, without a line end.
    template <size_t N, class Value> void item(const char (&label)[N], const Value &value)
    {
        write(label, value, "");
    }
    template <size_t N> void duration(const char (&label)[N], uint32_t seconds)
    {
        out_.commit(write_duration(begin(label, DURATION_TEXT_MAX), seconds));
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
        out_.commit(to);
    }

    // A line of its own, or the end of one: `text` holds the line end.
    template <size_t N> void put(const char (&text)[N]) { out_.put(text, N - 1); }

private:
    enum : size_t { VALUE_MAX = DIGEST_TEXT_MAX }; // of all that are no texts

    static char *write_value(char *to, uint32_t number) { return write_number(to, number); }
    static char *write_value(char *to, int32_t number) { return write_number(to, number); }
    static char *write_value(char *to, Ipv4 addr) { return write_ipv4(to, addr); }
    static char *write_value(char *to, const Mac &mac) { return write_mac(to, mac); }
    static char *write_value(char *to, const Md5Digest &digest) { return write_digest(to, digest); }

    template <size_t N, size_t E, NoText Value>
    void write(const char (&label)[N], const Value &value, const char (&end)[E])
    {
        char *to = write_value(begin(label, VALUE_MAX), value);
        memcpy(to, end, E - 1);
        out_.commit(to + E - 1);
    }

    template <size_t N, size_t E>
    void write(const char (&label)[N], std::string_view text, const char (&end)[E])
    {
        if (text.size() > Output::PREPARE_MAX / 2) {
            out_.put(label, N - 1);
            out_.put(text.data(), text.size());
            out_.put(end, E - 1);
            return;
        }
        char *to = std::copy(text.begin(), text.end(), begin(label, text.size()));
        memcpy(to, end, E - 1);
        out_.commit(to + E - 1);
    }

    // Room for a label, a value and a line end; gives where the value is to be written.
    template <size_t N> char *begin(const char (&label)[N], size_t size)
    {
        char *to = out_.prepare(N + size);
        memcpy(to, label, N - 1);
        return to + N - 1;
    }

    Output &out_;
};
