// SPDX-License-Identifier: MIT
// Configuration items in the order in which they were produced, in their wire form:
//
//     2 item type
//     2 index length N
//     N index key: the positions of the array elements on the way to the value
//     2 value length M
//     M value
//
// A list of items ends in 2 bytes 0 in the place of a type.
#pragma once

#include "util/bytes.h"
#include "util/messages.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

// The items back to back, as they are sent.
struct TlvBuffer {
    Bytes wire;
    Messages messages; // where those that make items report

    size_t wire_size() const { return wire.size(); }
    std::string_view bytes() const
    {
        return {reinterpret_cast<const char *>(wire.data()), wire.size()};
    }
};

// The positions of the array elements on the way to a value, outermost first.
using IndexKey = std::span<const uint8_t>;

// Each appends one item, copying what it is given; of type, lengths and numbers the low bits that
// the wire form has. Returns 0; or 1, with "Out of memory" reported and the buffer as it was.
int tlv_append(TlvBuffer &buffer, int32_t type, IndexKey index, std::span<const uint8_t> value);
int tlv_append_u32(TlvBuffer &buffer, int32_t type, IndexKey index, uint32_t number);
int tlv_append_u16(TlvBuffer &buffer, int32_t type, IndexKey index, uint32_t number);
int tlv_append_string(TlvBuffer &buffer, int32_t type, IndexKey index, std::string_view text);

// Ends a list of items, which another one can follow: two bytes 0. The same result.
int tlv_end(TlvBuffer &buffer);

// Releases the items and leaves the buffer empty.
void tlv_free(TlvBuffer &buffer);
