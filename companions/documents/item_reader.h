// SPDX-License-Identifier: MIT
// Reads configuration items in their wire form, see tlv_buffer.h.
#pragma once

#include "util/byte_order.h"

#include <cstdint>
#include <optional>
#include <string_view>

struct ItemView {
    uint16_t id = 0;
    std::string_view index; // a byte for each array on the way
    std::string_view value;
};

// One item after the other; it views the bytes.
class ItemReader {
public:
    explicit ItemReader(std::string_view items) : rest_(items) {}

    // None behind the last; and where the bytes are no item, which is_whole() tells.
    std::optional<ItemView> next()
    {
        ItemView item;
        std::string_view rest = rest_, id;
        if (rest.empty() || !take(rest, 2, id) || !take_counted(rest, item.index) ||
            !take_counted(rest, item.value))
            return {};
        item.id = from_big_endian<uint16_t>(id.data());
        rest_ = rest;
        return item;
    }

    [[nodiscard]] bool is_whole() const { return rest_.empty(); }

private:
    static bool take(std::string_view &from, size_t size, std::string_view &bytes)
    {
        if (from.size() < size)
            return false;
        bytes = from.substr(0, size);
        from.remove_prefix(size);
        return true;
    }
    static bool take_counted(std::string_view &from, std::string_view &bytes)
    {
        std::string_view size;
        return take(from, 2, size) && take(from, from_big_endian<uint16_t>(size.data()), bytes);
    }

    std::string_view rest_;
};
