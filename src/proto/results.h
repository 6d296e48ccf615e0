// SPDX-License-Identifier: MIT
// The two replies that consist of result bytes only.
#pragma once

#include "proto/byte_source.h"
#include "util/mac.h"

// Reads one result byte for each device of the request and reports its message. Returns 1 when any
// is not 0 or the reply ends early, else 0.
int read_device_results(ByteSource &source, const MacList &macs);

// Reads a 32-bit count and that many result bytes (none when its sign bit is set), reporting
// nothing. Returns 1 when any is not 0 or the reply ends early, else 0.
int read_counted_results(ByteSource &source);
