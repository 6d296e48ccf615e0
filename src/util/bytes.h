// SPDX-License-Identifier: MIT
// Bytes that are gathered one behind the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

// One owned block that doubles when it is full. An empty one owns nothing.
class Bytes {
public:
    Bytes() = default;
    Bytes(const Bytes &) = delete;
    Bytes &operator=(const Bytes &) = delete;
    Bytes(Bytes &&other) noexcept
        : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)),
          capacity_(std::exchange(other.capacity_, 0))
    {
    }
    ~Bytes() { free(data_); }

    // Memory for `count` more bytes behind those that are there, which commit() adds to them. Null,
    // with everything as it was, when memory is short.
    uint8_t *prepare(size_t count)
    {
        if (count > capacity_ - size_ && !grow(count))
            return nullptr;
        return data_ + size_;
    }
    void commit(size_t count) { size_ += count; }

    // Adds a copy; false, with everything as it was, when memory is short.
    bool append(const void *from, size_t count)
    {
        if (count == 0)
            return true;
        uint8_t *to = prepare(count);
        if (to == nullptr)
            return false;
        memcpy(to, from, count);
        commit(count);
        return true;
    }

    void clear()
    {
        free(data_);
        data_ = nullptr;
        size_ = capacity_ = 0;
    }

    uint8_t *data() { return data_; } // null when there never were any
    const uint8_t *data() const { return data_; }
    size_t size() const { return size_; }

private:
    bool grow(size_t count)
    {
        enum : size_t { CAPACITY_FIRST = 64 };
        if (count > PTRDIFF_MAX - size_)
            return false;
        size_t capacity = capacity_ < CAPACITY_FIRST ? size_t{CAPACITY_FIRST} : 2 * capacity_;
        if (capacity < size_ + count)
            capacity = size_ + count;
        void *block = realloc(data_, capacity);
        if (block == nullptr)
            return false;
        data_ = static_cast<uint8_t *>(block);
        capacity_ = capacity;
        return true;
    }

    uint8_t *data_ = nullptr;
    size_t size_ = 0;
    size_t capacity_ = 0;
};
