// SPDX-License-Identifier: MIT
// Where a reply's bytes come from: a window of available bytes and a way to get more.
#pragma once

#include "util/messages.h"

#include <cstddef>
#include <cstdint>
#include <sys/types.h>

struct ByteSource {
    const uint8_t *at = nullptr; // the next byte
    const uint8_t *end = nullptr;

    // Reads at least one and at most `size` of the next bytes to `to`, when none is available.
    // Returns their count, 0 at the end of the stream, or -1 with errno set. Without a function the
    // window is all there is.
    ssize_t (*receive)(ByteSource &source, void *to, size_t size) = nullptr;

    // Room for bytes that are read ahead.
    uint8_t *buffer = nullptr;
    size_t buffer_size = 0;

    Messages messages; // where those that read it report

    size_t available() const { return static_cast<size_t>(end - at); }
};

// Reads exactly `length` bytes. Returns length; a smaller count when the stream ends first; -1 with
// errno set when a read fails. Prints nothing.
ssize_t recv_all(ByteSource &source, void *to, size_t length);

// Reads at least one and at most `size` bytes, without reading ahead. Returns their count, 0 at the
// end of the stream, or -1 with errno set. Prints nothing.
ssize_t recv_some(ByteSource &source, void *to, size_t size);
