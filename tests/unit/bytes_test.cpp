// SPDX-License-Identifier: MIT
// Sizes that are larger than memory can be.
#include "util/bytes.h"
#include "util/sizes.h"

#include <gtest/gtest.h>

TEST(Sizes, AreTheLargestWhenTheyDoNotFit)
{
    constexpr size_t HALF = SIZE_MAX / 2 + 1; // a power of two
    EXPECT_EQ(product_of_sizes(HALF / 2, 2), HALF);
    EXPECT_EQ(product_of_sizes(HALF, 2), SIZE_MAX);
    EXPECT_EQ(product_of_sizes(HALF, HALF), SIZE_MAX);
    EXPECT_EQ(product_of_sizes(0, SIZE_MAX), 0U);
    EXPECT_EQ(sum_of_sizes(SIZE_MAX - 5, 4), SIZE_MAX - 1);
    EXPECT_EQ(sum_of_sizes(SIZE_MAX - 5, 16), SIZE_MAX);
}

TEST(Bytes, AreAsTheyWereWhenMemoryIsShort)
{
    Bytes bytes;
    ASSERT_TRUE(bytes.append("abc", 3));
    EXPECT_EQ(bytes.prepare(SIZE_MAX - 2), nullptr);
    EXPECT_EQ(bytes.prepare(PTRDIFF_MAX), nullptr);
    ASSERT_TRUE(bytes.append("def", 3));
    EXPECT_EQ(std::string(bytes.data(), bytes.data() + bytes.size()), "abcdef");
}
