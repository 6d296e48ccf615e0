// SPDX-License-Identifier: MIT
#include "proto/reply_reader.h"

#include "util/output.h"

void ReplyReader::take_piecewise(void *to, size_t length)
{
    const ssize_t got = failed_ ? 0 : recv_all(source_, to, length);
    if (got == static_cast<ssize_t>(length))
        return;
    if (got < 0)
        fail_errno("ERROR: reading socket failed for reason");
    memset(to, 0, length);
    set_failed();
}

void ReplyReader::report_no_memory(const char *message)
{
    fail("%s", message);
    set_failed();
}

void ReplyReader::set_failed()
{
    failed_ = true;
    source_.at = source_.end;
}
