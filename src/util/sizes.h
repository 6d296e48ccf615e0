// SPDX-License-Identifier: MIT
// Sizes that are made of numbers that others announce.
#pragma once

#include <cstddef>
#include <cstdint>

// The product and the sum in bytes; SIZE_MAX, which no allocation has, where a size_t cannot hold
// them (it has 32 bits on small machines).
constexpr size_t product_of_sizes(size_t count, size_t size)
{
    size_t product = 0;
    return __builtin_mul_overflow(count, size, &product) ? SIZE_MAX : product;
}
constexpr size_t sum_of_sizes(size_t one, size_t other)
{
    size_t sum = 0;
    return __builtin_add_overflow(one, other, &sum) ? SIZE_MAX : sum;
}
