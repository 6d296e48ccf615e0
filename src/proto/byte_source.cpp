// SPDX-License-Identifier: MIT
#include "proto/byte_source.h"

#include <algorithm>
#include <cstring>

static size_t take_at_hand(ByteSource &source, void *to, size_t room)
{
    const size_t count = std::min(room, source.at_hand());
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
        if (source.at_hand() == 0 && source.receive != nullptr) {
            const ssize_t got = source.receive(source, source.ahead, source.ahead_room);
            if (got < 0)
                return -1;
            source.at = source.ahead;
            source.end = source.ahead + got;
        }
        if (source.at_hand() == 0)
            break;
        const size_t count = take_at_hand(source, next, missing);
        next += count;
        missing -= count;
    }
    return static_cast<ssize_t>(length - missing);
}

ssize_t recv_some(ByteSource &source, void *to, size_t room)
{
    if (source.at_hand() > 0 || source.receive == nullptr)
        return static_cast<ssize_t>(take_at_hand(source, to, room));
    return source.receive(source, to, room);
}
