// SPDX-License-Identifier: MIT
// The rich replies to list requests that fields.py wrote before the tests: access_point, switch.
#pragma once

#include <fstream>
#include <iterator>
#include <string>

inline std::string rich_reply(const std::string &name)
{
    std::ifstream in(REPLY_FOLDER "/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}
