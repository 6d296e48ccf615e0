// SPDX-License-Identifier: MIT
// Standard output through one buffer, and the messages on standard error.
#pragma once

#include "util/number.h"

#include <cstdarg>
#include <cstddef>
#include <cstring>

class Output {
public:
    // The next `size` (at most PREPARE_MAX) bytes of the buffer, to be written and then taken over
    // by commit() with the end of what was written.
    char *prepare(size_t size)
    {
        if (sizeof buffer_ - used_ < size)
            flush();
        return buffer_ + used_;
    }
    void commit(const char *end) { used_ = static_cast<size_t>(end - buffer_); }

    void put(const char *bytes, size_t length);
    void put(const char *text) { put(text, strlen(text)); }
    void put(char c)
    {
        char *to = prepare(1);
        *to = c;
        commit(to + 1);
    }

    void put_number(uint32_t number) { commit(write_number(prepare(NUMBER_TEXT_MAX), number)); }

    // Hands everything to the system. What standard output does not take is dropped silently.
    void flush();

    enum : size_t { PREPARE_MAX = 4096 };

private:
    size_t used_ = 0;
    char buffer_[65536] = {};
};

extern constinit Output standard_output;

// Writes a message, in printf's form and with its own line end, on standard error, behind what
// standard output was given before.
[[gnu::format(printf, 1, 0)]] void print_message(const char *format, va_list arguments);

// The same for the programs themselves; the library reports through Messages. Returns 1, the status
// of a command that failed.
[[gnu::format(printf, 1, 2)]] int fail(const char *format, ...);
