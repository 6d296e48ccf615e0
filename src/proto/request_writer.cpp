// SPDX-License-Identifier: MIT
#include "proto/request_writer.h"

#include "util/byte_order.h"

#include <algorithm>
#include <cstring>

bool RequestWriter::refuse(const char *what, uint64_t number, uint32_t most)
{
    session_.messages.report("ERROR: Request of %llu %s is too long, at most %u fit.\n",
                             static_cast<unsigned long long>(number), what, most);
    return false;
}

bool RequestWriter::begin(uint8_t code, LengthKind length, const RequestSize &size)
{
    if (length == LengthKind::u16 && size.bytes > UINT16_MAX)
        return refuse("bytes", size.bytes, UINT16_MAX);
    if (length == LengthKind::u32 && size.bytes > UINT32_MAX)
        return refuse("bytes", size.bytes, UINT32_MAX);
    if (size.counted > UINT16_MAX)
        return refuse("bytes", size.counted, UINT16_MAX);
    if (size.addresses > UINT16_MAX)
        return refuse("addresses", size.addresses, UINT16_MAX);
    put(code);
    if (length == LengthKind::u32)
        put(static_cast<uint32_t>(size.bytes));
    else if (length != LengthKind::none)
        put(static_cast<uint16_t>(size.bytes));
    return true;
}

void RequestWriter::put(uint16_t number)
{
    uint8_t wire[sizeof number];
    to_big_endian(wire, number);
    put_bytes(wire, sizeof wire);
}

void RequestWriter::put(uint32_t number)
{
    uint8_t wire[sizeof number];
    to_big_endian(wire, number);
    put_bytes(wire, sizeof wire);
}

void RequestWriter::put_bytes(const void *from, size_t length)
{
    const auto *next = static_cast<const uint8_t *>(from);
    while (length > 0 && !failed_) {
        const size_t count = std::min(length, sizeof session_.out - used_);
        memcpy(session_.out + used_, next, count);
        used_ += count;
        next += count;
        length -= count;
        if (used_ == sizeof session_.out)
            flush();
    }
}

void RequestWriter::flush()
{
    if (!failed_ && send_all(session_, session_.out, used_) < 0) {
        session_.messages.report_errno(Cause::not_sent, "ERROR: writing socket failed for reason");
        failed_ = true;
    }
    used_ = 0;
}
