// SPDX-License-Identifier: MIT
// An array that does not own its memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

// Its items come into being one by one, as they are appended in memory that was allocated for them.
template <class Item> class ArrayView {
public:
    ArrayView() = default;
    explicit ArrayView(void *memory) : items_(static_cast<Item *>(memory)) {}

    // Adds a default item at the end, within that memory, and returns it.
    Item &append() { return *new (&items_[size_++]) Item(); }

    uint32_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    Item &operator[](size_t i) { return items_[i]; }
    const Item &operator[](size_t i) const { return items_[i]; }
    Item *begin() { return items_; }
    Item *end() { return items_ + size_; }
    const Item *begin() const { return items_; }
    const Item *end() const { return items_ + size_; }

protected:
    Item *items_ = nullptr;
    uint32_t size_ = 0;
};
