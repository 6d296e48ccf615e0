// SPDX-License-Identifier: MIT
// The arena with the chunks that users get, also where other tests have it allocate each piece on
// its own: pieces lie within their chunk (the address sanitizer would tell), apart from each other,
// and aligned.
#include "util/arena.h"

#include <cstring>
#include <gtest/gtest.h>
#include <vector>

TEST(Arena, PiecesOfManyChunks)
{
    Arena arena;
    struct Piece {
        unsigned char *at;
        size_t size;
    };
    for (int round = 0; round < 2; round++) {
        std::vector<Piece> pieces;
        size_t total = 0, seed = 1;
        while (total < (size_t{24} << 20)) { // beyond the largest chunk, several times
            seed = seed * 1103515245 + 12345;
            const size_t size = seed >> 16 & (seed % 61 == 0 ? 0x7FFFF : 0xFFF),
                         alignment = size_t{1} << seed % 5;
            auto *at = static_cast<unsigned char *>(arena.allocate(size, alignment));
            ASSERT_NE(at, nullptr);
            ASSERT_EQ(reinterpret_cast<uintptr_t>(at) % alignment, 0u);
            memset(at, static_cast<int>(pieces.size() % 251), size);
            pieces.push_back({at, size});
            total += size;
        }
        for (size_t i = 0; i < pieces.size(); i++)
            for (size_t at = 0; at < pieces[i].size; at += 509)
                ASSERT_EQ(pieces[i].at[at], i % 251) << i;
        arena.clear();
    }
    EXPECT_EQ(arena.allocate(SIZE_MAX - 8, 1), nullptr);
}
