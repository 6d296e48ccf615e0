// SPDX-License-Identifier: MIT
// Objects whose allocation can fail.
#pragma once

#include <cstddef>
#include <cstdlib>

// `new` of a class derived from this gives null when memory is short. (The library's nothrow new
// does so as well, but by way of an exception, which itself needs memory.)
struct HeapObject {
    static void *operator new(size_t size) noexcept { return malloc(size); }
    static void operator delete(void *object) { free(object); }
};
