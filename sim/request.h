// SPDX-License-Identifier: MIT
// How long requests are, told from their first bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string_view>

inline constexpr size_t REQUEST_MAX = size_t{64} << 20; // bytes

// Bytes that are no request; the text says why.
struct BadRequest : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Whether two bytes behind the command code tell how many bytes follow them.
enum class Payload : uint8_t { untold, told, told_in_low_bits };

// What a request consists of: some bytes, and behind them a count (of `width` bytes) of things of
// `size` bytes each; twice.
struct Shape {
    struct Part {
        uint8_t bytes, width = 0, size = 0;
    };
    Payload payload;
    Part parts[2];

    // The length of the request that begins with these bytes; none as long as they do not tell.
    // Throws BadRequest.
    std::optional<size_t> length(std::string_view request) const;
};
