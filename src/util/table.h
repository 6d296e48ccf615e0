// SPDX-License-Identifier: MIT
// An owned array with its length.
#pragma once

#include "util/rows.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

// The array is allocated once, at its announced length, and its items come into being one by one as
// they are appended. Memory that no item uses is never touched, so a length that a sender made up
// costs nothing before its items arrive. An empty table owns nothing.
template <class Item> class Table : public Rows<Item> {
    static_assert(alignof(Item) <= alignof(std::max_align_t));

public:
    Table() = default;
    Table(const Table &) = delete;
    Table &operator=(const Table &) = delete;
    Table(Table &&other) noexcept { *this = std::move(other); }
    Table &operator=(Table &&other) noexcept
    {
        std::swap(items_, other.items_);
        std::swap(size_, other.size_);
        return *this;
    }
    ~Table() { clear(); }

    // Makes room for `count` items in all, keeping those that are there. False, with the table as
    // it was, when memory is short.
    bool reserve(size_t count)
    {
        void *room = nullptr;
        if (count > PTRDIFF_MAX / sizeof(Item) ||
            (room = malloc(count == 0 ? 1 : count * sizeof(Item))) == nullptr)
            return false;
        auto *items = static_cast<Item *>(room);
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
    using Rows<Item>::items_;
    using Rows<Item>::size_;
};
