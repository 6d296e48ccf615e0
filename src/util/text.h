// SPDX-License-Identifier: MIT
// An owned NUL-terminated text, or none.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <utility>

class Text {
public:
    Text() = default;
    Text(const Text &) = delete;
    Text &operator=(const Text &) = delete;
    Text(Text &&other) noexcept : bytes_(std::exchange(other.bytes_, nullptr)) {}
    Text &operator=(Text &&other) noexcept
    {
        std::swap(bytes_, other.bytes_);
        return *this;
    }
    ~Text() { free(bytes_); }

    // Replaces the text by room for `length` bytes, unset, and the terminator behind them. Returns
    // the room, or null (and the text is absent) when memory is short.
    char *allocate(size_t length)
    {
        free(bytes_);
        bytes_ = static_cast<char *>(malloc(length + 1));
        if (bytes_ != nullptr)
            bytes_[length] = '\0';
        return bytes_;
    }

    // Replaces the text by a copy; false (and the text is absent) when memory is short.
    bool assign(const char *text)
    {
        const size_t length = strlen(text);
        if (allocate(length) == nullptr)
            return false;
        memcpy(bytes_, text, length);
        return true;
    }

    bool absent() const { return bytes_ == nullptr; }
    char *data() { return bytes_; }                                       // null when absent
    const char *c_str() const { return bytes_ == nullptr ? "" : bytes_; } // "" when absent

private:
    char *bytes_ = nullptr;
};
