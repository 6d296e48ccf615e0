// SPDX-License-Identifier: MIT
// Takes the fields of a request off its front.
#pragma once

#include "util/byte_order.h"
#include "util/mac.h"

#include <cstring>
#include <string_view>
#include <vector>

// After the first field that is not there all are zero or empty. What it gives are views: they last
// as long as the bytes.
class Taker {
public:
    explicit Taker(std::string_view bytes) : rest_(bytes) {}

    bool ok() const { return ok_; }
    bool empty() const { return rest_.empty(); }
    std::string_view rest() const { return rest_; }

    std::string_view bytes(size_t length)
    {
        ok_ = ok_ && length <= rest_.size();
        const std::string_view taken = rest_.substr(0, ok_ ? length : 0);
        rest_.remove_prefix(taken.size());
        return taken;
    }

    template <class Int> Int number()
    {
        const std::string_view wire = bytes(sizeof(Int));
        return ok_ ? from_big_endian<Int>(wire.data()) : Int{0};
    }

    Mac mac()
    {
        Mac mac;
        const std::string_view wire = bytes(sizeof mac.byte);
        if (ok_)
            memcpy(mac.byte, wire.data(), sizeof mac.byte);
        return mac;
    }

    std::vector<Mac> macs(size_t count)
    {
        std::vector<Mac> macs;
        for (; count > 0 && ok_; count--)
            macs.push_back(mac());
        return macs;
    }

    // Addresses behind their number in 16 bits.
    std::vector<Mac> mac_list() { return macs(number<uint16_t>()); }

private:
    std::string_view rest_;
    bool ok_ = true;
};
