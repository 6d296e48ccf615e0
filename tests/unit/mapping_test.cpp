// SPDX-License-Identifier: MIT
// Bytes that are gathered: a mapping through all its sizes, a block that doubles.
#include "util/bytes.h"
#include "util/mapping.h"

#include <gtest/gtest.h>

template <class Gathered> static void gather(size_t total)
{
    Gathered bytes;
    for (int round = 0; round < 2; round++) {
        uint32_t number = 1;
        while (bytes.size() < total) {
            const size_t length = number * 2654435761U >> 12 & 0x3FFFF;
            uint8_t *to = bytes.place(length + 1);
            ASSERT_NE(to, nullptr);
            for (size_t i = 0; i < length; i++)
                to[i] = static_cast<uint8_t>((bytes.size() + i) % 251);
            bytes.advance(length);
            number++;
        }
        for (size_t i = 0; i < bytes.size(); i++)
            ASSERT_EQ(bytes.data()[i], i % 251) << i;
        bytes.clear();
        EXPECT_EQ(bytes.size(), 0u);
    }
}

TEST(Gathered, KeepsItsBytesAsItGrows)
{
    gather<Mapping>(20 << 20);
    gather<Bytes>(3 << 20);
}

TEST(Gathered, IsAsItWasWhenMemoryIsShort)
{
    Bytes bytes;
    ASSERT_TRUE(bytes.append("abc", 3));
    EXPECT_EQ(bytes.place(SIZE_MAX - 2), nullptr);
    EXPECT_EQ(bytes.place(PTRDIFF_MAX), nullptr);
    ASSERT_TRUE(bytes.append("def", 3));
    EXPECT_EQ(std::string(bytes.data(), bytes.data() + bytes.size()), "abcdef");
}
