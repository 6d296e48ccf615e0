// SPDX-License-Identifier: MIT
// The items that zov cfg would send, as text.
#pragma once

#include "config/config_keys.h"
#include "config/tlv_buffer.h"

#include <string>
#include <string_view>
#include <vector>

// An item and where it is from.
struct SentItem {
    size_t end;            // of it in the buffer; it begins where the one before ends
    std::string_view path; // as its row has it
    const ConfigKey *row;  // null: an array's number of elements
};

// A value as text; null: a number of elements.
std::string value_text(const ConfigKey *row, std::string_view value);

// A line for each item: its id, the positions of its index key, its path and its value, aligned.
// Texts are JSON strings, lists have commas between their elements.
std::string items_text(const TlvBuffer &buffer, const std::vector<SentItem> &items);
