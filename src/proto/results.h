// SPDX-License-Identifier: MIT
// The two replies that consist of result bytes only.
#pragma once

#include "proto/request_writer.h"

// Reads one result byte for each device of the request and reports its message. Returns 1 when any
// is not 0 or the reply ends early, else 0.
int read_device_results(ByteSource &source, Macs macs);

// Sends a request that is answered so, and reads the answer.
template <class Request> int request_device_results(AcSession &session, const Request &request)
{
    return send_request(session, request) != 0 ? 1 : read_device_results(session, request.wtps);
}

// Reads a 32-bit count and that many result bytes (none when its sign bit is set), reporting
// nothing. Returns 1 when any is not 0 or the reply ends early, else 0.
int read_counted_results(ByteSource &source);
