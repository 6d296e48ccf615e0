// SPDX-License-Identifier: MIT
// Memory to be used again and again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

// One owned block that has no content of its own and is as large as the largest that was asked for.
class Block {
public:
    Block() = default;
    Block(const Block &) = delete;
    Block &operator=(const Block &) = delete;
    ~Block() { free(data_); }

    // Makes sure of `size` bytes, of any content; false, with nothing left, when memory is short.
    bool reserve(size_t size)
    {
        if (size <= size_)
            return true;
        clear();
        data_ = static_cast<uint8_t *>(malloc(size));
        size_ = data_ == nullptr ? 0 : size;
        return data_ != nullptr;
    }

    void clear()
    {
        free(data_);
        data_ = nullptr;
        size_ = 0;
    }

    uint8_t *data() { return data_; } // aligned for any object; null when there never was any

private:
    uint8_t *data_ = nullptr;
    size_t size_ = 0;
};
