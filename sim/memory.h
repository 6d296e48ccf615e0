// SPDX-License-Identifier: MIT
// Memory for the texts and tables of a device's record.
#pragma once

#include "util/rows.h"

#include <algorithm>
#include <cstddef>
#include <memory_resource>
#include <string_view>

// Everything in it lives as long as it does. Throws bad_alloc when memory is short.
class Memory {
public:
    // A copy of a text.
    std::string_view keep(std::string_view text)
    {
        auto *copy = static_cast<char *>(resource_.allocate(text.size() + 1, 1));
        std::copy(text.begin(), text.end(), copy);
        return {copy, text.size()};
    }

    // Gives a table, which becomes empty, room for so many rows.
    template <class Row> void make_room(Rows<Row> &table, size_t count)
    {
        table = Rows<Row>(resource_.allocate(count * sizeof(Row), alignof(Row)));
    }

    template <class Object> Object *make()
    {
        return new (resource_.allocate(sizeof(Object), alignof(Object))) Object();
    }

private:
    std::pmr::monotonic_buffer_resource resource_;
};
