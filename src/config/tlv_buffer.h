// SPDX-License-Identifier: MIT
// Configuration items in the order in which they were produced, and their wire form:
//
//     2 item type
//     2 index length N
//     N index key: the positions of the array elements on the way to the value
//     2 value length M
//     M value
#pragma once

#include "proto/request_writer.h"

#include <cstddef>
#include <cstdint>

// One item: a node with its index and value behind it, in one allocation.
struct TlvItem {
    uint32_t type; // its low 16 bits go on the wire
    uint32_t index_len;
    uint32_t value_len;
    TlvItem *next;

    const uint8_t *index() const { return reinterpret_cast<const uint8_t *>(this + 1); }
    const uint8_t *value() const { return index() + index_len; }
};

// Empty when zero. The buffer owns its items.
struct TlvBuffer {
    TlvItem *first = nullptr;
    TlvItem *last = nullptr;
    uint32_t wire_size = 0; // bytes that the items take on the wire

    TlvBuffer() = default;
    TlvBuffer(const TlvBuffer &) = delete;
    TlvBuffer &operator=(const TlvBuffer &) = delete;
    TlvBuffer(TlvBuffer &&other) noexcept;
    ~TlvBuffer();
};

// Each appends one item, copying what it is given. Returns 0; or 1, with "Out of memory" printed
// and the buffer as it was.
int tlv_append(TlvBuffer &buffer, uint32_t type, uint32_t index_len, const uint8_t *index,
               uint32_t value_len, const void *value);
int tlv_append_u32(TlvBuffer &buffer, uint32_t type, uint32_t index_len, const uint8_t *index,
                   uint32_t number);
int tlv_append_u16(TlvBuffer &buffer, uint32_t type, uint32_t index_len, const uint8_t *index,
                   uint32_t number); // its low 16 bits
int tlv_append_string(TlvBuffer &buffer, uint32_t type, uint32_t index_len, const uint8_t *index,
                      const char *text); // without the terminator

// Writes all items back to back.
void tlv_write(RequestWriter &request, const TlvBuffer &buffer);

// Releases the items and leaves the buffer empty.
void tlv_free(TlvBuffer &buffer);
