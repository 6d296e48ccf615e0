// SPDX-License-Identifier: MIT
// The item buffer.
#include "config/tlv_buffer.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>

static std::string hex(const void *bytes, size_t length)
{
    std::string text;
    for (size_t i = 0; i < length; i++) {
        char digits[3];
        snprintf(digits, sizeof digits, "%02x", static_cast<const uint8_t *>(bytes)[i]);
        text += digits;
    }
    return text;
}

// "type:index:value" for each item.
static std::string show(const TlvBuffer &buffer)
{
    std::string text;
    const uint8_t *at = buffer.wire.data(), *end = at + buffer.wire_size();
    const auto number = [&] {
        at += 2;
        return static_cast<size_t>(at[-2] << 8 | at[-1]);
    };
    const auto bytes = [&] {
        const size_t length = number();
        at += length;
        return hex(at - length, length);
    };
    while (at < end) {
        text += std::to_string(number()) + ":";
        text += bytes() + ":";
        text += bytes() + " ";
    }
    EXPECT_EQ(at, end);
    return text;
}

TEST(TlvBuffer, Items)
{
    uint8_t index[] = {1, 2};
    TlvBuffer buffer;
    tlv_free(buffer);
    EXPECT_EQ(tlv_append(buffer, 70000, 0, nullptr, 0, nullptr), 0);
    EXPECT_EQ(tlv_append_u32(buffer, 4, 2, index, 0x01020304), 0);
    EXPECT_EQ(buffer.wire_size(), 6u + 12);
    EXPECT_EQ(tlv_append_u16(buffer, 5, 1, index, static_cast<uint32_t>(-60)), 0);
    EXPECT_EQ(tlv_append_string(buffer, 6, 0, nullptr, "AP1"), 0);
    EXPECT_EQ(tlv_append_string(buffer, 7, 1, index, ""), 0);
    index[0] = index[1] = 0xEE; // the buffer has its own copies
    EXPECT_EQ(show(buffer), "4464:: 4:0102:01020304 5:01:ffc4 6::415031 7:01: ");
    EXPECT_EQ(buffer.wire_size(), 18u + 9 + 9 + 7);
    tlv_free(buffer);
    EXPECT_EQ(buffer.wire_size(), 0u);
}
