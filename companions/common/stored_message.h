// SPDX-License-Identifier: MIT
// A message of the library, kept for a program that has words of its own for it.
#pragma once

#include "util/messages.h"

#include <cstddef>

// The first message since clear(); later ones are dropped. What is too long is cut and ends in
// "...".
struct StoredMessage {
    enum : size_t { TEXT_MAX = 8192 };

    bool there = false;
    Cause cause = Cause::other;
    int detail = 0;
    char text[TEXT_MAX + 1] = "";

    void clear() { there = false; }

    // For the `messages` of a session or of items; it lasts as long as this does.
    Messages sink() { return {take, this}; }

private:
    static void take(void *to, Cause cause, int detail, const char *format, va_list arguments);
};
