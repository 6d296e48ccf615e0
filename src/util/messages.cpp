// SPDX-License-Identifier: MIT
#include "util/messages.h"

#include "util/output.h"

#include <cerrno>
#include <cstring>

static void hand_over(const Messages &messages, Cause cause, int detail, const char *format,
                      va_list arguments)
{
    if (messages.take != nullptr)
        messages.take(messages.to, cause, detail, format, arguments);
    else
        print_message(format, arguments);
}

int Messages::report(const char *format, ...) const
{
    va_list arguments;
    va_start(arguments, format);
    hand_over(*this, Cause::other, 0, format, arguments);
    va_end(arguments);
    return 1;
}

int Messages::report(Cause cause, int detail, const char *format, ...) const
{
    va_list arguments;
    va_start(arguments, format);
    hand_over(*this, cause, detail, format, arguments);
    va_end(arguments);
    return 1;
}

int Messages::report_errno(Cause cause, const char *text) const
{
    const int error = errno;
    return report(cause, error, "%s: %s\n", text, strerror(error));
}

int Messages::report_silently(Cause cause) const
{
    return take == nullptr ? 1 : report(cause, 0, "%s", "");
}
