// SPDX-License-Identifier: MIT
// Writes one request field by field, in wire order.
//
// Fields gather in the session's buffer, which is sent when it is full and by finish(): a request
// of usual size leaves in one packet. The first failure is reported and remembered; after it
// nothing more is sent.
#pragma once

#include "proto/commands.h"
#include "proto/session.h"
#include "util/mac.h"

#include <cstddef>
#include <cstdint>

class RequestWriter {
public:
    RequestWriter(AcSession &session, CommandCode code) : session_(session) { u8(code); }

    void u8(uint8_t number) { bytes(&number, sizeof number); }
    void u16(uint16_t number);
    void u32(uint32_t number);
    void bytes(const void *from, size_t length);
    void mac(const Mac &mac) { bytes(mac.byte, sizeof mac.byte); }

    // A 16-bit length of all that is written between the two. What does not fit refuses the whole
    // request.
    void begin_length();
    void end_length();

    // A 16-bit count, and the addresses. Too many of them refuse the whole request.
    void mac_count(const MacList &macs);
    void mac_list(const MacList &macs);

    // Refuses the request, before any of it is sent, because `what` are too many.
    void refuse(const char *what, uint64_t number, uint32_t most);

    // Sends what is still gathered. Returns 0, or 1 when anything failed.
    int finish();

private:
    void flush();

    AcSession &session_;
    size_t used_ = 0;
    size_t length_at_ = 0; // where the length that was begun stands, or 0: it never stands first
    size_t length_ = 0;    // its bytes so far
    bool failed_ = false;
};
