// SPDX-License-Identifier: MIT
// The one TCP connection of an invocation: admission by the controller, exact transfers, goodbye.
#pragma once

#include "proto/byte_source.h"

#include <cstddef>
#include <cstdint>

inline constexpr const char *AC_ADDRESS = "127.0.0.1";
enum : int { AC_PORT = 1235 };

// The word that the controller sends to each client first; all others refuse as well.
enum : int32_t { HANDSHAKE_ADMITTED = 1, HANDSHAKE_BUSY = -1 };

// Bytes that arrive are read ahead into `in`; the ByteSource part is the window of those not yet
// taken. Requests gather in `out` (see RequestWriter).
struct AcSession : ByteSource {
    int socket = 0; // set by ac_attach
    uint8_t in[65536] = {};
    uint8_t out[65552] = {}; // any request whose length has 16 bits, as a whole
};

// Takes over a stream socket, connected or not yet, as the session's own.
void ac_attach(AcSession &session, int socket);

// Connects to the controller at the dotted address (any other text means 0.0.0.0) and the port's
// low 16 bits, and reads its four-byte handshake word.
// Returns 0 when admitted; 1 with the message reported otherwise.
int ac_connect(AcSession &session, const char *address, int port);

// Only reads the handshake word, of a session that is connected, with the same result.
int ac_admit(AcSession &session);

// Says goodbye (one byte 0) and closes the socket; failures are reported and otherwise ignored.
void ac_disconnect(AcSession &session);

// Writes exactly `length` bytes. Returns length, or -1 with errno as the failing call left it.
// Prints nothing.
ssize_t send_all(AcSession &session, const void *bytes, size_t length);
