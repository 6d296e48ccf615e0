// SPDX-License-Identifier: MIT
#include "common/stored_message.h"

#include <cstdio>
#include <cstring>

void StoredMessage::take(void *to, Cause cause, int detail, const char *format, va_list arguments)
{
    auto &self = *static_cast<StoredMessage *>(to);
    if (self.there)
        return;
    self.there = true;
    self.cause = cause;
    self.detail = detail;
    constexpr char CUT[] = "...";
    const int length = vsnprintf(self.text, sizeof self.text, format, arguments);
    if (length < 0 || static_cast<size_t>(length) > TEXT_MAX)
        memcpy(self.text + sizeof self.text - sizeof CUT, CUT, sizeof CUT);
}
