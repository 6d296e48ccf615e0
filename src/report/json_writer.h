// SPDX-License-Identifier: MIT
// Writes JSON members, objects and arrays, without blanks. The writer owns commas and brackets, so
// a printer is a list of members in output order. Out is an Output, or what can be used as one.
#pragma once

#include "report/format.h"
#include "util/number.h"
#include "util/output.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

template <class Out> class BasicJsonWriter {
public:
    explicit BasicJsonWriter(Out &out) : out_(out) {}

    template <size_t N> void member(const char (&name)[N], uint32_t number)
    {
        out_.commit(write_number(key(name, NUMBER_TEXT_MAX), number));
    }
    template <size_t N> void member(const char (&name)[N], int32_t number)
    {
        out_.commit(write_number(key(name, NUMBER_TEXT_MAX), number));
    }
    template <size_t N> void member(const char (&name)[N], uint16_t number)
    {
        member(name, uint32_t{number});
    }
    template <size_t N> void member(const char (&name)[N], uint8_t number)
    {
        member(name, uint32_t{number});
    }
    template <size_t N> void member(const char (&name)[N], const Mac &mac)
    {
        close_string(write_mac(open_string(name, MAC_TEXT_MAX), mac));
    }
    template <size_t N> void member(const char (&name)[N], Ipv4 addr)
    {
        close_string(write_ipv4(open_string(name, IPV4_TEXT_MAX), addr));
    }
    template <size_t N> void member(const char (&name)[N], const Md5Digest &digest)
    {
        close_string(write_digest(open_string(name, DIGEST_TEXT_MAX), digest));
    }
    template <size_t N> void member(const char (&name)[N], const CfgCap &cap)
    {
        char *to = key(name, sizeof cap.flag * strlen("255,") + 1);
        *to++ = '[';
        for (const uint8_t flag : cap.flag) {
            to = write_number(to, flag);
            *to++ = ',';
        }
        to[-1] = ']';
        out_.commit(to);
    }

    // A string with its text as it stands, whatever it holds.
    template <size_t N> void member(const char (&name)[N], std::string_view text)
    {
        if (text.size() > Out::PREPARE_MAX / 2) {
            out_.commit(open_string(name, 0));
            out_.put(text.data(), text.size());
            out_.put('"');
            return;
        }
        close_string(std::copy(text.begin(), text.end(), open_string(name, text.size())));
    }

    // A string with its text escaped.
    template <size_t N> void escaped(const char (&name)[N], std::string_view text)
    {
        if (text.size() > Out::PREPARE_MAX / 4) {
            out_.commit(open_string(name, 0));
            json_escape(out_, text);
            out_.put('"');
            return;
        }
        close_string(write_escaped(open_string(name, 2 * text.size()), text));
    }

    // A string without its carriage returns and line feeds.
    template <size_t N> void single_line(const char (&name)[N], std::string_view text)
    {
        out_.commit(open_string(name, 0));
        for (const char c : text)
            if (c != '\r' && c != '\n')
                out_.put(c);
        out_.put('"');
    }

    // A number in quotes.
    template <size_t N> void quoted_member(const char (&name)[N], int32_t number)
    {
        close_string(write_number(open_string(name, NUMBER_TEXT_MAX), number));
    }

    // A value that is JSON already.
    template <size_t N> void raw(const char (&name)[N], std::string_view json)
    {
        out_.commit(key(name, 0));
        out_.put(json.data(), json.size());
    }

    template <size_t N> void object(const char (&name)[N]) { open(key(name, 1), '{'); }
    void object() { open(next(1), '{'); } // as an array's element
    void end_object() { close('}'); }

    template <size_t N> void array(const char (&name)[N]) { open(key(name, 1), '['); }
    void end_array() { close(']'); }

    // An array's elements that are strings, with their texts as they stand or escaped.
    void element(std::string_view text)
    {
        char *to = next(text.size() + 2);
        *to++ = '"';
        close_string(std::copy(text.begin(), text.end(), to));
    }
    void element(const Mac &mac)
    {
        char *to = next(MAC_TEXT_MAX + 2);
        *to++ = '"';
        close_string(write_mac(to, mac));
    }
    void escaped_element(std::string_view text)
    {
        char *to = next(1);
        *to = '"';
        out_.commit(to + 1);
        json_escape(out_, text);
        out_.put('"');
    }

protected:
    // Memory for a value of `size` bytes, and a quote behind it, after the comma if one is due.
    char *next(size_t size)
    {
        char *to = out_.prepare(size + 2);
        *to = ',';
        to += comma_;
        comma_ = 1;
        return to;
    }

    // The name takes N + 2 bytes (N counts its terminator, for which the colon stands), and the
    // opening quote of a string one more.
    template <size_t N> char *key(const char (&name)[N], size_t size)
    {
        char *to = next(N + 4 + size);
        *to++ = '"';
        memcpy(to, name, N - 1);
        to += N - 1;
        *to++ = '"';
        *to++ = ':';
        return to;
    }

    template <size_t N> char *open_string(const char (&name)[N], size_t size)
    {
        char *to = key(name, size);
        *to = '"';
        return to + 1;
    }

    void close_string(char *end)
    {
        *end = '"';
        out_.commit(end + 1);
    }

    void open(char *to, char bracket)
    {
        *to = bracket;
        out_.commit(to + 1);
        comma_ = 0;
    }

    void close(char bracket)
    {
        out_.put(bracket);
        comma_ = 1;
    }

    Out &out_;

private:
    size_t comma_ = 0; // 1 when the next member or element needs a comma before it
};

using JsonWriter = BasicJsonWriter<Output>;
