// SPDX-License-Identifier: MIT
// The loop that serves all clients.
#pragma once

#include "sim/options.h"

#include <csignal>

// Listens on the asked address; the port is filled in when the system chose it. -1 with errno set.
int start_listening(SimOptions &options);

// Serves clients until the descriptor `stop` becomes readable. None of them keeps another waiting:
// in each round each takes one step, if it can. The signals are let through during a step.
void serve_clients(int listener, int stop, const sigset_t &signals, const SimOptions &options,
                   Controller &controller);
