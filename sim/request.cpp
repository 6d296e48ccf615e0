// SPDX-License-Identifier: MIT
#include "sim/request.h"

#include <string>

static size_t number(std::string_view wire)
{
    size_t number = 0;
    for (const char byte : wire)
        number = number << 8 | static_cast<unsigned char>(byte);
    return number;
}

std::optional<size_t> Shape::length(std::string_view request) const
{
    enum : size_t { TOLD_UP_TO = 3 }; // the code and the length itself
    size_t length = 0;
    for (const Part &part : parts) {
        length += part.bytes;
        if (part.width > 0 && length + part.width > request.size())
            return std::nullopt;
        if (part.width > 0)
            length += part.width + part.size * number(request.substr(length, part.width));
        if (length > REQUEST_MAX)
            throw BadRequest("request of " + std::to_string(length) + " bytes is too long");
    }
    if (payload == Payload::untold)
        return length;
    if (request.size() < TOLD_UP_TO)
        return std::nullopt;
    const size_t follow = length - TOLD_UP_TO;
    if ((payload == Payload::told ? follow : follow & UINT16_MAX) != number(request.substr(1, 2)))
        throw BadRequest("length of the request does not match it");
    return length;
}
