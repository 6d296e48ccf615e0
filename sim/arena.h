// SPDX-License-Identifier: MIT
// Arena for the texts and tables of a device's record.
#pragma once

#include "util/array_view.h"
#include "util/sizes.h"

#include <algorithm>
#include <cstddef>
#include <memory_resource>
#include <string_view>

// Everything in it lives as long as it does. Throws bad_alloc when memory is short.
class Arena {
public:
    // A copy of a text.
    std::string_view copy(std::string_view text)
    {
        auto *copy = static_cast<char *>(resource_.allocate(text.size() + 1, 1));
        std::copy(text.begin(), text.end(), copy);
        return {copy, text.size()};
    }

    // Gives an array, which becomes empty, memory for so many items.
    template <class Row> void allocate(ArrayView<Row> &table, size_t count)
    {
        table =
            ArrayView<Row>(resource_.allocate(product_of_sizes(count, sizeof(Row)), alignof(Row)));
    }

    template <class Object> Object *make()
    {
        return new (resource_.allocate(sizeof(Object), alignof(Object))) Object();
    }

private:
    std::pmr::monotonic_buffer_resource resource_;
};
