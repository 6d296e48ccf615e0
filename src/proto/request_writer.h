// SPDX-License-Identifier: MIT
// Writes one request field by field, in wire order.
//
// Fields gather in the session's 64 KiB buffer, which is sent when it is full and by finish(): a
// request of usual size leaves in one packet. The first failure is printed once and remembered;
// after it nothing more is sent.
#pragma once

#include "proto/commands.h"
#include "proto/session.h"
#include "util/mac.h"

#include <cstddef>
#include <cstdint>

class RequestWriter {
public:
    RequestWriter(AcSession &session, CommandCode code) : session_(session) { u8(code); }

    void u8(uint8_t number);
    void u16(uint16_t number);
    void u32(uint32_t number);
    void bytes(const void *from, size_t length);
    void mac(const Mac &mac) { bytes(mac.byte, sizeof mac.byte); }

    // A 16-bit length of what follows, or a 16-bit count of addresses; one that does not fit
    // refuses the whole request.
    void length16(size_t length);
    void count16(size_t count);

    void mac_list(const MacList &macs); // 16-bit count, then the addresses

    // Sends what is still gathered. Returns 0, or 1 when anything failed.
    int finish();

private:
    void refuse(const char *what, size_t number);
    void flush();

    AcSession &session_;
    size_t used_ = 0;
    bool failed_ = false;
};
