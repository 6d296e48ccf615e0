// SPDX-License-Identifier: MIT
// The command line of the simulated controller.
#pragma once

#include "connection.h"
#include "controller.h"

#include <cstdint>
#include <netinet/in.h>
#include <string>

inline constexpr int32_t HANDSHAKE_ADMIT = 1;
inline constexpr int32_t HANDSHAKE_BUSY = -1;

struct SimOptions {
    in_addr address = {}; // loopback unless told otherwise
    uint16_t port = 1235; // 0: any free one
    int32_t handshake = HANDSHAKE_ADMIT;
    Faults faults;
    std::string pid_file;
    ControllerOptions controller;
};

// Returns -1 to go on, or the status to end with at once (help was shown, or something is wrong and
// the message printed).
int read_options(int argc, char **argv, SimOptions &options);
