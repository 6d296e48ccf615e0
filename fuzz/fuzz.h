// SPDX-License-Identifier: MIT
// What the fuzz targets share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

// What a target is given, from both ends taken apart.
struct Input {
    const uint8_t *at;
    size_t size;

    uint8_t byte()
    {
        if (size == 0)
            return 0;
        size--;
        return *at++;
    }
    std::string_view text() const { return {reinterpret_cast<const char *>(at), size}; }

    // The bytes up to the next NUL, which goes with them.
    std::string_view text_to_nul()
    {
        const std::string_view all = text(), part = all.substr(0, all.find('\0'));
        const size_t taken = part.size() + (part.size() < all.size() ? 1 : 0);
        at += taken;
        size -= taken;
        return part;
    }
};

// What must never be false. The line is that of the promise in the target.
#define PROMISE(condition)                                                                         \
    ((condition) ? void()                                                                          \
                 : (fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition), abort()))
