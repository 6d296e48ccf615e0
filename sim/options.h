// SPDX-License-Identifier: MIT
// The command line of the simulated controller.
#pragma once

#include "client.h"
#include "proto/session.h"

#include <cstdint>
#include <netinet/in.h>
#include <string>

struct SimOptions {
    in_addr address = {};    // loopback unless told otherwise
    uint16_t port = AC_PORT; // 0: any free one
    int32_t handshake = HANDSHAKE_ADMITTED;
    Faults faults;
    std::string pid_file;
    ControllerOptions controller;
};

// Returns -1 to go on, or the status to end with at once (help was shown, or something is wrong and
// the message printed).
int read_options(int argc, char **argv, SimOptions &options);
