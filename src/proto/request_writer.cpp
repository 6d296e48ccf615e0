// SPDX-License-Identifier: MIT
#include "proto/request_writer.h"

#include "proto/byte_order.h"
#include "util/output.h"

#include <algorithm>
#include <cstring>

void RequestWriter::u8(uint8_t number)
{
    bytes(&number, sizeof number);
}

void RequestWriter::u16(uint16_t number)
{
    uint8_t wire[2];
    to_big_endian(wire, number);
    bytes(wire, sizeof wire);
}

void RequestWriter::u32(uint32_t number)
{
    uint8_t wire[4];
    to_big_endian(wire, number);
    bytes(wire, sizeof wire);
}

void RequestWriter::bytes(const void *from, size_t length)
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

void RequestWriter::length16(size_t length)
{
    if (length > UINT16_MAX)
        refuse("bytes", length);
    u16(static_cast<uint16_t>(length));
}

void RequestWriter::count16(size_t count)
{
    if (count > UINT16_MAX)
        refuse("addresses", count);
    u16(static_cast<uint16_t>(count));
}

void RequestWriter::mac_list(const MacList &macs)
{
    count16(macs.size());
    for (const Mac &one : macs)
        mac(one);
}

int RequestWriter::finish()
{
    flush();
    return failed_ ? 1 : 0;
}

void RequestWriter::refuse(const char *what, size_t number)
{
    if (!failed_)
        fail("ERROR: Request of %zu %s is too long, at most %u fit.\n", number, what, UINT16_MAX);
    failed_ = true;
}

void RequestWriter::flush()
{
    if (!failed_ && send_all(session_, session_.out, used_) < 0) {
        fail_errno("ERROR: writing socket failed for reason");
        failed_ = true;
    }
    used_ = 0;
}
