// SPDX-License-Identifier: MIT
// Where a reply's bytes come from: a window of bytes at hand and a way to get the next window.
#pragma once

#include <cstddef>
#include <cstdint>
#include <sys/types.h>

struct ByteSource {
    const uint8_t *at = nullptr; // the next byte
    const uint8_t *end = nullptr;

    // Replaces the empty window by the next bytes. Returns their count, 0 at the end of the stream,
    // or -1 with errno set. Without a function the window is all there is.
    ssize_t (*refill)(ByteSource &source) = nullptr;

    size_t at_hand() const { return static_cast<size_t>(end - at); }
};

// Reads exactly `length` bytes. Returns length; a smaller count when the stream ends first; -1 with
// errno set when a read fails. Prints nothing.
ssize_t recv_all(ByteSource &source, void *to, size_t length);
