// SPDX-License-Identifier: MIT
#include "proto/byte_source.h"

#include <algorithm>
#include <cstring>

ssize_t recv_all(ByteSource &source, void *to, size_t length)
{
    auto *next = static_cast<uint8_t *>(to);
    size_t missing = length;
    while (missing > 0) {
        if (source.at_hand() == 0) {
            const ssize_t got = source.refill == nullptr ? 0 : source.refill(source);
            if (got < 0)
                return -1;
            if (got == 0)
                break;
        }
        const size_t count = std::min(missing, source.at_hand());
        memcpy(next, source.at, count);
        source.at += count;
        next += count;
        missing -= count;
    }
    return static_cast<ssize_t>(length - missing);
}
