// SPDX-License-Identifier: MIT
// Reads a reply field by field, in wire order.
//
// The first failure is reported (of the end of the stream zov prints nothing) and remembered; after
// it every read gives zero at once and takes nothing from the source. So a
// decoder is a plain list of reads; it asks ok() before it trusts a count, and at its end.
#pragma once

#include "proto/byte_source.h"
#include "util/byte_order.h"
#include "util/text.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

class ReplyReader {
public:
    explicit ReplyReader(ByteSource &source) : source_(source) {}

    bool ok() const { return !failed_; }

    // An integer of 8, 16 or 32 bits, big-endian; or a structure that is bytes only, as they come.
    template <class Field> void read(Field &field)
    {
        static_assert(std::is_integral_v<Field> ||
                      (std::is_trivially_copyable_v<Field> && alignof(Field) == 1));
        uint8_t apart[sizeof(Field)];
        const uint8_t *wire = source_.at;
        if (source_.available() >= sizeof(Field)) {
            source_.at += sizeof(Field);
        } else {
            take_piecewise(apart, sizeof apart);
            wire = apart;
        }
        if constexpr (std::is_integral_v<Field>)
            field = from_big_endian<Field>(wire);
        else
            memcpy(&field, wire, sizeof field);
    }

    template <class Int> Int number()
    {
        Int number;
        read(number);
        return number;
    }

    // A text behind its 16-bit length; length 0 leaves it absent. `allocate(length)` gives the
    // memory for it, with a terminator behind, or null, which is then reported.
    template <class Allocate> void read_text(Allocate allocate)
    {
        const auto length = number<uint16_t>();
        if (length == 0)
            return;
        if (char *to = allocate(length))
            take(to, length);
        else
            report_no_memory();
    }
    void read(Text &text)
    {
        read_text([&](size_t length) { return text.allocate(length); });
    }

    // `length` bytes as they come; all zero after a failure.
    void take(void *to, size_t length)
    {
        if (source_.available() < length) {
            take_piecewise(to, length);
            return;
        }
        memcpy(to, source_.at, length);
        source_.at += length;
    }

    // Reports and remembers that there is no memory for a part of the reply.
    void report_no_memory(const char *message = "ERROR: Out of memory\n");

    // Remembers a failure that the caller has reported.
    void set_failed();

private:
    void take_piecewise(void *to, size_t length);

    ByteSource &source_;
    bool failed_ = false;
};
