// SPDX-License-Identifier: MIT
// An owned array with its length.
#pragma once

#include "util/array_view.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

// The array is allocated once, at its announced length, and its items come into being one by one as
// they are appended. Memory that no item uses is never touched, so a length that a sender forged
// costs nothing before its items arrive. An empty array owns nothing.
template <class Item> class FixedArray : public ArrayView<Item> {
    static_assert(alignof(Item) <= alignof(std::max_align_t));

public:
    FixedArray() = default;
    FixedArray(const FixedArray &) = delete;
    FixedArray &operator=(const FixedArray &) = delete;
    FixedArray(FixedArray &&other) noexcept { *this = std::move(other); }
    FixedArray &operator=(FixedArray &&other) noexcept
    {
        std::swap(items_, other.items_);
        std::swap(size_, other.size_);
        return *this;
    }
    ~FixedArray() { clear(); }

    // Allocates memory for `count` items in all, keeping those that are there. False, with the
    // array as it was, when memory is short.
    bool reserve(size_t count)
    {
        void *memory = nullptr;
        if (count > PTRDIFF_MAX / sizeof(Item) ||
            (memory = malloc(count == 0 ? 1 : count * sizeof(Item))) == nullptr)
            return false;
        auto *items = static_cast<Item *>(memory);
        for (uint32_t i = 0; i < size_; i++) {
            new (&items[i]) Item(std::move(items_[i]));
            items_[i].~Item();
        }
        free(std::exchange(items_, items));
        return true;
    }

    void clear()
    {
        std::destroy_n(items_, size_);
        free(items_);
        items_ = nullptr;
        size_ = 0;
    }

private:
    using ArrayView<Item>::items_;
    using ArrayView<Item>::size_;
};
