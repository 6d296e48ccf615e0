// SPDX-License-Identifier: MIT
#include "config/tlv_buffer.h"

#include "util/byte_order.h"

#include <cstring>

static void append_u16(TlvBuffer &buffer, uint32_t number)
{
    to_big_endian(buffer.wire.prepare(2), static_cast<uint16_t>(number));
    buffer.wire.commit(2);
}

int tlv_append(TlvBuffer &buffer, uint32_t type, uint32_t index_len, const uint8_t *index,
               uint32_t value_len, const void *value)
{
    if (buffer.wire.prepare(size_t{6} + index_len + value_len) == nullptr)
        return buffer.messages.report(Cause::no_memory, 0, "ERROR: Out of memory\n");
    append_u16(buffer, type);
    append_u16(buffer, index_len);
    buffer.wire.append(index, index_len);
    append_u16(buffer, value_len);
    buffer.wire.append(value, value_len);
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

int tlv_end(TlvBuffer &buffer)
{
    if (buffer.wire.prepare(2) == nullptr)
        return buffer.messages.report(Cause::no_memory, 0, "ERROR: Out of memory\n");
    append_u16(buffer, 0);
    return 0;
}

void tlv_free(TlvBuffer &buffer)
{
    buffer.wire.clear();
}
