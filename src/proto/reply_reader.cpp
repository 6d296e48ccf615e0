// SPDX-License-Identifier: MIT
#include "proto/reply_reader.h"

void ReplyReader::take_piecewise(void *to, size_t length)
{
    const ssize_t got = failed_ ? 0 : recv_all(source_, to, length);
    if (got == static_cast<ssize_t>(length))
        return;
    if (got < 0)
        source_.messages.report_errno(Cause::not_received,
                                      "ERROR: reading socket failed for reason");
    else if (!failed_)
        source_.messages.report_silently(Cause::ended);
    memset(to, 0, length);
    set_failed();
}

void ReplyReader::report_no_memory(const char *message)
{
    source_.messages.report(Cause::no_memory, 0, "%s", message);
    set_failed();
}

void ReplyReader::set_failed()
{
    failed_ = true;
    source_.at = source_.end;
}
