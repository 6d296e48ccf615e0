// SPDX-License-Identifier: MIT
// Very many bytes that are gathered one behind the other.
#pragma once

#include <cstddef>
#include <cstdint>

// One block of pages that doubles when it is full, without being copied: the pages move to their
// new addresses. A large one is made of huge pages where the system has them, since most of what it
// costs to fill a block is that its pages have to be had. An empty one owns nothing.
class PageBuffer {
public:
    PageBuffer() = default;
    PageBuffer(const PageBuffer &) = delete;
    PageBuffer &operator=(const PageBuffer &) = delete;
    ~PageBuffer() { clear(); }

    // Memory for `count` more bytes behind those that are there, which commit() adds to them. Null,
    // with everything as it was, when memory is short.
    uint8_t *prepare(size_t count)
    {
        if (count > capacity_ - size_ && !grow(count))
            return nullptr;
        return data_ + size_;
    }
    void commit(size_t count) { size_ += count; }

    // Releases everything.
    void clear();

    const uint8_t *data() const { return data_; }
    size_t size() const { return size_; }

private:
    bool grow(size_t count);

    uint8_t *data_ = nullptr;
    size_t size_ = 0;
    size_t capacity_ = 0;
};
