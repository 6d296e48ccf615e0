// SPDX-License-Identifier: MIT
#include "proto/byte_source.h"

#include <algorithm>
#include <cstring>

static size_t take_available(ByteSource &source, void *to, size_t size)
{
    const size_t count = std::min(size, source.available());
    if (count > 0)
        memcpy(to, source.at, count);
    source.at += count;
    return count;
}

ssize_t recv_all(ByteSource &source, void *to, size_t length)
{
    auto *next = static_cast<uint8_t *>(to);
    size_t missing = length;
    while (missing > 0) {
        if (source.available() == 0 && source.receive != nullptr) {
            const ssize_t got = source.receive(source, source.buffer, source.buffer_size);
            if (got < 0)
                return -1;
            source.at = source.buffer;
            source.end = source.buffer + got;
        }
        if (source.available() == 0)
            break;
        const size_t count = take_available(source, next, missing);
        next += count;
        missing -= count;
    }
    return static_cast<ssize_t>(length - missing);
}

ssize_t recv_some(ByteSource &source, void *to, size_t size)
{
    if (source.available() > 0 || source.receive == nullptr)
        return static_cast<ssize_t>(take_available(source, to, size));
    return source.receive(source, to, size);
}
