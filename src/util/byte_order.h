// SPDX-License-Identifier: MIT
// Integers in big-endian (network) order. The only place that knows about byte order.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

template <class Int> Int from_big_endian(const void *from)
{
    std::make_unsigned_t<Int> bits;
    memcpy(&bits, from, sizeof bits);
    if constexpr (std::endian::native == std::endian::little && sizeof bits == 2)
        bits = __builtin_bswap16(bits);
    if constexpr (std::endian::native == std::endian::little && sizeof bits == 4)
        bits = __builtin_bswap32(bits);
    return static_cast<Int>(bits);
}

template <class Int> void to_big_endian(void *to, Int number)
{
    const Int swapped = from_big_endian<Int>(&number);
    memcpy(to, &swapped, sizeof swapped);
}
