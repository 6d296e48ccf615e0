// SPDX-License-Identifier: MIT
#include "config/tlv_buffer.h"

#include "proto/byte_order.h"
#include "util/output.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

TlvBuffer::TlvBuffer(TlvBuffer &&other) noexcept
    : first(std::exchange(other.first, nullptr)), last(std::exchange(other.last, nullptr)),
      wire_size(std::exchange(other.wire_size, 0))
{
}

TlvBuffer::~TlvBuffer()
{
    tlv_free(*this);
}

int tlv_append(TlvBuffer &buffer, uint32_t type, uint32_t index_len, const uint8_t *index,
               uint32_t value_len, const void *value)
{
    void *room = malloc(sizeof(TlvItem) + index_len + value_len);
    if (room == nullptr)
        return fail("ERROR: Out of memory\n");
    auto *item = new (room) TlvItem{type, index_len, value_len, nullptr};
    auto *bytes = reinterpret_cast<uint8_t *>(item + 1);
    if (index_len > 0)
        memcpy(bytes, index, index_len);
    if (value_len > 0)
        memcpy(bytes + index_len, value, value_len);
    (buffer.first == nullptr ? buffer.first : buffer.last->next) = item;
    buffer.last = item;
    buffer.wire_size += 6 + index_len + value_len;
    return 0;
}

int tlv_append_u32(TlvBuffer &buffer, uint32_t type, uint32_t index_len, const uint8_t *index,
                   uint32_t number)
{
    uint8_t wire[4];
    to_big_endian(wire, number);
    return tlv_append(buffer, type, index_len, index, sizeof wire, wire);
}

int tlv_append_u16(TlvBuffer &buffer, uint32_t type, uint32_t index_len, const uint8_t *index,
                   uint32_t number)
{
    uint8_t wire[2];
    to_big_endian(wire, static_cast<uint16_t>(number));
    return tlv_append(buffer, type, index_len, index, sizeof wire, wire);
}

int tlv_append_string(TlvBuffer &buffer, uint32_t type, uint32_t index_len, const uint8_t *index,
                      const char *text)
{
    return tlv_append(buffer, type, index_len, index, static_cast<uint32_t>(strlen(text)), text);
}

void tlv_write(RequestWriter &request, const TlvBuffer &buffer)
{
    for (const TlvItem *item = buffer.first; item != nullptr; item = item->next) {
        request.u16(static_cast<uint16_t>(item->type));
        request.u16(static_cast<uint16_t>(item->index_len));
        request.bytes(item->index(), item->index_len);
        request.u16(static_cast<uint16_t>(item->value_len));
        request.bytes(item->value(), item->value_len);
    }
}

void tlv_free(TlvBuffer &buffer)
{
    while (buffer.first != nullptr)
        free(std::exchange(buffer.first, buffer.first->next));
    buffer.last = nullptr;
    buffer.wire_size = 0;
}
