// SPDX-License-Identifier: MIT
// Reads requests and tells how long they are, from their first bytes on.
#pragma once

#include "proto/requests.h"
#include "util/byte_order.h"

#include <algorithm>
#include <concepts>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

inline constexpr size_t REQUEST_MAX = size_t{64} << 20; // bytes

// Bytes that are no request; the text says why.
struct BadRequest : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The visitor of a request's fields that reads them. Those that have not arrived are zero or empty,
// and places are counted on. What it gives are views: they last as long as the bytes.
class RequestReader {
public:
    explicit RequestReader(std::string_view bytes) : bytes_(bytes) {}

    template <class... Fields> void operator()(Fields &&...fields) { (read(fields), ...); }

    size_t at() const { return at_; }                // where the fields read so far end
    bool ok() const { return at_ <= bytes_.size(); } // whether all of them have arrived
    std::string_view rest() const { return bytes_.substr(std::min(at_, bytes_.size())); }

    // There is nothing behind this place.
    void end_at(size_t place) { bytes_ = bytes_.substr(0, place); }

    // Whether every count has arrived, so that at() is exact.
    bool is_decided() const { return counts_end_ <= bytes_.size(); }

    template <class Int> Int number()
    {
        Int number;
        read(number);
        return number;
    }

private:
    const char *take(size_t size)
    {
        const size_t from = at_;
        at_ += size;
        return ok() ? bytes_.data() + from : nullptr;
    }
    std::string_view take_bytes(size_t size)
    {
        const char *from = take(size);
        return {from, from == nullptr ? 0 : size};
    }

    template <std::integral Int> void read(Int &number)
    {
        const char *from = take(sizeof number);
        number = from == nullptr ? Int{0} : from_big_endian<Int>(from);
    }
    void read(bool &flag) { flag = number<uint8_t>() != 0; }
    void read(Mac &mac)
    {
        const char *from = take(sizeof mac);
        mac = Mac();
        if (from != nullptr)
            memcpy(&mac, from, sizeof mac);
    }
    template <class Int> size_t count()
    {
        const auto count = number<Int>();
        counts_end_ = at_;
        return count;
    }
    void read(const MacCount &) { count_ = count<uint16_t>(); }
    void read(const MacAddresses &list)
    {
        const char *from = take(count_ * sizeof(Mac)); // a Mac is six bytes at any address
        list.macs = {reinterpret_cast<const Mac *>(from), from == nullptr ? 0 : count_};
    }
    void read(Macs &macs) { (*this)(MacCount{macs}, MacAddresses{macs}); }
    template <class Int> void read(Counted<Int> &text) { text.bytes = take_bytes(count<Int>()); }
    void read(Rest &rest) { rest.bytes = take_bytes(ok() ? bytes_.size() - at_ : 0); }

    std::string_view bytes_;
    size_t at_ = 0, count_ = 0, counts_end_ = 0;
};

inline void check_length(size_t length)
{
    if (length > REQUEST_MAX)
        throw BadRequest("request of " + std::to_string(length) + " bytes is too long");
}

// Reads the request that the bytes begin with. Returns its length, and it is whole when so many
// bytes are there; none as long as they do not tell. Throws BadRequest.
template <class Request>
std::optional<size_t> read_request(std::string_view bytes, Request &request)
{
    constexpr LengthKind kind = Request::LENGTH;
    RequestReader reader(bytes);
    reader.number<uint8_t>(); // the code
    const size_t announced = kind == LengthKind::none  ? 0
                             : kind == LengthKind::u32 ? reader.number<uint32_t>()
                                                       : reader.number<uint16_t>();
    if (!reader.ok())
        return std::nullopt;
    const size_t header = reader.at();
    if (kind == LengthKind::u32) {
        check_length(header + announced);
        if (bytes.size() < header + announced)
            return header + announced;
        reader.end_at(header + announced);
    }
    request.visit(reader);
    check_length(reader.at());
    if (!reader.is_decided() && kind != LengthKind::u32)
        return std::nullopt;
    const size_t length = reader.at() - header;
    if ((kind == LengthKind::u16 || kind == LengthKind::u32) ? length != announced
        : kind == LengthKind::u16_low_bits                   ? (length & UINT16_MAX) != announced
                                                             : false)
        throw BadRequest("length of the request does not match it");
    return reader.at();
}
