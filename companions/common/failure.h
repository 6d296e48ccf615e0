// SPDX-License-Identifier: MIT
// How the companion tools end when they cannot do what was asked: an exception, which
// run_program() turns into a message "NAME: TEXT" on standard error and an exit status.
#pragma once

#include "util/messages.h"

#include <stdexcept>
#include <string>

// Something failed: status 1.
struct Failure : std::runtime_error {
    explicit Failure(const std::string &text, Cause why = Cause::other)
        : std::runtime_error(text), cause(why)
    {
    }

    Cause cause;
};

// The command line is wrong: status 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// "TEXT: REASON" for the errno that a system call left.
std::string with_reason(const std::string &text, int error);
