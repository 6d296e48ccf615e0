// SPDX-License-Identifier: MIT
#include "proto/request_writer.h"

#include "util/byte_order.h"

#include <algorithm>
#include <cstring>

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

// Under a length nothing is sent before the length is known: it fits the buffer whenever it fits
// its 16 bits, so what is more is only counted.
void RequestWriter::bytes(const void *from, size_t length)
{
    const auto *next = static_cast<const uint8_t *>(from);
    length_ += length;
    while (length > 0 && !failed_) {
        const size_t count = std::min(length, sizeof session_.out - used_);
        if (count == 0 && length_at_ > 0)
            return;
        memcpy(session_.out + used_, next, count);
        used_ += count;
        next += count;
        length -= count;
        if (used_ == sizeof session_.out && length_at_ == 0)
            flush();
    }
}

void RequestWriter::begin_length()
{
    length_at_ = used_;
    u16(0);
    length_ = 0;
}

void RequestWriter::end_length()
{
    if (length_ > UINT16_MAX)
        refuse("bytes", length_, UINT16_MAX);
    to_big_endian(session_.out + length_at_, static_cast<uint16_t>(length_));
    length_at_ = 0;
}

void RequestWriter::mac_count(const MacList &macs)
{
    if (macs.size() > UINT16_MAX && length_at_ == 0) // else the length will not fit either
        refuse("addresses", macs.size(), UINT16_MAX);
    u16(static_cast<uint16_t>(macs.size()));
}

void RequestWriter::mac_list(const MacList &macs)
{
    mac_count(macs);
    for (const Mac &one : macs)
        mac(one);
}

void RequestWriter::refuse(const char *what, uint64_t number, uint32_t most)
{
    if (!failed_)
        session_.messages.report("ERROR: Request of %llu %s is too long, at most %u fit.\n",
                                 static_cast<unsigned long long>(number), what, most);
    failed_ = true;
}

int RequestWriter::finish()
{
    flush();
    return failed_ ? 1 : 0;
}

void RequestWriter::flush()
{
    if (!failed_ && send_all(session_, session_.out, used_) < 0) {
        session_.messages.report_errno(Cause::not_sent, "ERROR: writing socket failed for reason");
        failed_ = true;
    }
    used_ = 0;
}
