// SPDX-License-Identifier: MIT
// How a function of the library tells what went wrong: with a cause, for programs, and a text.
#pragma once

#include <cstdarg>
#include <cstdint>

enum class Cause : uint8_t {
    other,        // the text tells
    no_memory,    //
    unreachable,  // no connection can be made; the detail is an errno
    not_sent,     // likewise
    not_received, // likewise
    ended,        // the stream ended within a reply
    busy,         // the controller admits nobody at present
    refused,      // it admits nobody; the detail is its number
    silent,       // it let a time-out pass
    too_long,     // its reply is longer than the caller wants
};

// Where messages go: to standard error at once, behind what standard output was given, when `take`
// is null, and else to `take`, which must not throw. A plain value that is all zero by default.
struct Messages {
    void (*take)(void *to, Cause cause, int detail, const char *format,
                 va_list arguments) = nullptr;
    void *to = nullptr;

    // Each returns 1, the status of a command that failed. The format is printf's, and a text ends
    // its own line. The detail says more of some causes, see there.
    [[gnu::format(printf, 2, 3)]] int report(const char *format, ...) const;
    [[gnu::format(printf, 4, 5)]] int report(Cause cause, int detail, const char *format,
                                             ...) const;

    // Of a system call that failed, with errno as it left it: perror(3)'s text.
    int report_errno(Cause cause, const char *text) const;

    // What has no text: nothing is printed.
    int report_silently(Cause cause) const;
};
