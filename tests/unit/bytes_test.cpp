// SPDX-License-Identifier: MIT
// Bytes that are gathered, asked for more room than there can be.
#include "util/bytes.h"

#include <gtest/gtest.h>

TEST(Bytes, AreAsTheyWereWhenMemoryIsShort)
{
    Bytes bytes;
    ASSERT_TRUE(bytes.append("abc", 3));
    EXPECT_EQ(bytes.prepare(SIZE_MAX - 2), nullptr);
    EXPECT_EQ(bytes.prepare(PTRDIFF_MAX), nullptr);
    ASSERT_TRUE(bytes.append("def", 3));
    EXPECT_EQ(std::string(bytes.data(), bytes.data() + bytes.size()), "abcdef");
}
