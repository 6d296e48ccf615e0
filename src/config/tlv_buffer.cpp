// SPDX-License-Identifier: MIT
#include "config/tlv_buffer.h"

#include "util/byte_order.h"

template <class Int> static void append_u16(TlvBuffer &buffer, Int number)
{
    to_big_endian(buffer.wire.prepare(2), static_cast<uint16_t>(number));
    buffer.wire.commit(2);
}

int tlv_append(TlvBuffer &buffer, int32_t type, IndexKey index, std::span<const uint8_t> value)
{
    if (buffer.wire.prepare(6 + index.size() + value.size()) == nullptr)
        return buffer.messages.report(Cause::no_memory, 0, "ERROR: Out of memory\n");
    append_u16(buffer, type);
    append_u16(buffer, index.size());
    buffer.wire.append(index.data(), index.size());
    append_u16(buffer, value.size());
    buffer.wire.append(value.data(), value.size());
    return 0;
}

int tlv_append_u32(TlvBuffer &buffer, int32_t type, IndexKey index, uint32_t number)
{
    uint8_t wire[4];
    to_big_endian(wire, number);
    return tlv_append(buffer, type, index, wire);
}

int tlv_append_u16(TlvBuffer &buffer, int32_t type, IndexKey index, uint32_t number)
{
    uint8_t wire[2];
    to_big_endian(wire, static_cast<uint16_t>(number));
    return tlv_append(buffer, type, index, wire);
}

int tlv_append_string(TlvBuffer &buffer, int32_t type, IndexKey index, std::string_view text)
{
    return tlv_append(buffer, type, index,
                      {reinterpret_cast<const uint8_t *>(text.data()), text.size()});
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
