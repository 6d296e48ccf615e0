// SPDX-License-Identifier: MIT
// Memory that many small things share and that is released all at once, and texts and tables in it.
#pragma once

#include "util/rows.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>

// Hands out memory piece by piece from chunks that grow with what is asked for. Pieces are neither
// released nor destroyed on their own. A piece that is larger than a chunk gets a chunk of its own,
// whose pages cost nothing before they are used.
class Arena {
public:
    Arena() = default;
    Arena(const Arena &) = delete;
    Arena &operator=(const Arena &) = delete;
    ~Arena() { clear(); }

    // Unset memory for `size` bytes; null when memory is short.
    void *allocate(size_t size, size_t alignment)
    {
        const size_t skip = -reinterpret_cast<uintptr_t>(next_) & (alignment - 1);
        if (size > left_ || skip > left_ - size)
            return allocate_in_new_chunk(size);
        void *piece = next_ + skip;
        next_ += skip + size;
        left_ -= skip + size;
        return piece;
    }

    // A default object; null when memory is short.
    template <class Object> Object *make()
    {
        static_assert(std::is_trivially_destructible_v<Object>);
        void *room = allocate(sizeof(Object), alignof(Object));
        return room == nullptr ? nullptr : new (room) Object();
    }

    // Releases everything.
    void clear();

private:
    struct Chunk;
    void *allocate_in_new_chunk(size_t size);

    Chunk *chunks_ = nullptr;
    char *next_ = nullptr; // within the newest chunk
    size_t left_ = 0;
    size_t chunk_size_ = 0;
};

// A NUL-terminated text in an arena, or none.
class ArenaText {
public:
    // Room for `length` bytes, unset, and the terminator behind them; null (and the text is absent)
    // when memory is short.
    char *allocate(Arena &memory, size_t length)
    {
        bytes_ = static_cast<char *>(memory.allocate(length + 1, 1));
        if (bytes_ != nullptr)
            bytes_[length] = '\0';
        return bytes_;
    }

    // Replaces the text by a copy; false (and the text is absent) when memory is short.
    bool assign(Arena &memory, const char *text)
    {
        const size_t length = strlen(text);
        if (allocate(memory, length) == nullptr)
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

// A table in an arena. Its memory is taken once, at the announced length, and its items come into
// being one by one as they are appended, so that a length that a sender made up costs nothing
// before its items arrive.
template <class Item> class ArenaTable : public Rows<Item> {
    static_assert(std::is_trivially_destructible_v<Item>);

public:
    // Gives the table, which becomes empty, room for `count` items; false when memory is short.
    bool reserve(Arena &memory, size_t count)
    {
        size_ = 0;
        items_ = nullptr;
        if (count == 0)
            return true;
        if (count <= PTRDIFF_MAX / sizeof(Item))
            items_ = static_cast<Item *>(memory.allocate(count * sizeof(Item), alignof(Item)));
        return items_ != nullptr;
    }

    void clear() { size_ = 0; } // keeps the room

private:
    using Rows<Item>::items_;
    using Rows<Item>::size_;
};
