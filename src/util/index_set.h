// SPDX-License-Identifier: MIT
// A hash set of positions in a table that its caller keeps, for finding equal rows in linear time.
#pragma once

#include "util/fixed_array.h"

#include <cstddef>
#include <cstdint>

// Spreads 64 bits over a 64-bit hash (the finaliser of MurmurHash3).
inline uint64_t hash_bits(uint64_t bits)
{
    bits ^= bits >> 33;
    bits *= 0xff51afd7ed558ccdULL;
    bits ^= bits >> 33;
    bits *= 0xc4ceb9fe1a85ec53ULL;
    return bits ^ (bits >> 33);
}

class IndexSet {
public:
    // Allocates memory for `count` positions (at most 2^30); false when memory is short.
    bool reserve(size_t count)
    {
        size_t slots = 16;
        while (slots < 2 * count)
            slots *= 2;
        if (!slots_.reserve(slots))
            return false;
        while (slots_.size() < slots)
            slots_.append() = 0;
        mask_ = slots - 1;
        return true;
    }

    // Returns the position already in the set whose row `same_row(position)` says is equal; without
    // one, puts `position` in and returns it.
    template <class SameRow> uint32_t insert(uint64_t hash, uint32_t position, SameRow same_row)
    {
        for (size_t i = static_cast<size_t>(hash) & mask_;; i = (i + 1) & mask_) {
            uint32_t &slot = slots_[i];
            if (slot == 0) {
                slot = position + 1;
                return position;
            }
            if (same_row(slot - 1))
                return slot - 1;
        }
    }

private:
    FixedArray<uint32_t> slots_; // position + 1, or 0 for a free slot
    size_t mask_ = 0;
};
