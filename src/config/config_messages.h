// SPDX-License-Identifier: MIT
// Where the messages about a configuration file go.
#pragma once

#include <cstdarg>

// To standard error, as all messages of zov's, unless `take` is there to take them.
struct ConfigMessages {
    void (*take)(void *to, const char *format, va_list arguments) = nullptr;
    void *to = nullptr;

    // Returns 1; the format is printf's, and a message ends its own line.
    [[gnu::format(printf, 2, 3)]] int report(const char *format, ...) const;
};
