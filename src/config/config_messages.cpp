// SPDX-License-Identifier: MIT
#include "config/config_messages.h"

#include "util/output.h"

int ConfigMessages::report(const char *format, ...) const
{
    va_list arguments;
    va_start(arguments, format);
    if (take != nullptr)
        take(to, format, arguments);
    else
        fail_with(format, arguments);
    va_end(arguments);
    return 1;
}
