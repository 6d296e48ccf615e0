// SPDX-License-Identifier: MIT
#include "proto/reply_reader.h"

#include "util/output.h"

void ReplyReader::read_text(Text &text, const char *no_memory)
{
    const auto length = number<uint16_t>();
    if (length == 0)
        return;
    char *room = text.allocate(length);
    if (room == nullptr) {
        fail("%s", no_memory);
        set_failed();
        return;
    }
    if (source_.at_hand() >= length) {
        memcpy(room, source_.at, length);
        source_.at += length;
    } else {
        take(room, length);
    }
}

void ReplyReader::take(void *to, size_t length)
{
    const ssize_t got = failed_ ? 0 : recv_all(source_, to, length);
    if (got == static_cast<ssize_t>(length))
        return;
    if (got < 0)
        fail_errno("ERROR: reading socket failed for reason");
    memset(to, 0, length);
    set_failed();
}

void ReplyReader::set_failed()
{
    failed_ = true;
    source_.at = source_.end;
}
