// SPDX-License-Identifier: MIT
// JSON that others have written: is it JSON?
#pragma once

#include <string>
#include <string_view>

// Appends the one JSON value (RFC 8259) that the text is, without the blanks between its parts and
// with control characters of its strings escaped. False, with `to` as it was, when the text is none
// or has more than JSON_DEPTH_MAX arrays and objects within each other.
enum : unsigned { JSON_DEPTH_MAX = 64 };
bool append_json(std::string &to, std::string_view text);
