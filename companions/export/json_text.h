// SPDX-License-Identifier: MIT
// JSON from others, and JSON that a library has written, in the form of all that zov-export writes.
#pragma once

#include <string>
#include <string_view>

enum : unsigned { JSON_DEPTH_MAX = 64 };

// Appends the one JSON value (RFC 8259) that the text is, without the white space between its parts
// and with control characters of its strings escaped. False, with `to` as it was, when the text is
// none or has more than JSON_DEPTH_MAX arrays and objects within each other.
bool append_json(std::string &to, std::string_view text);

// The JSON with DEL and C1 characters, which stand in strings only, escaped as well.
std::string escape_controls(std::string json);
