// SPDX-License-Identifier: MIT
// Texts of devices, which can hold any bytes, as valid UTF-8 that does no harm: not to what reads
// it, and not to a terminal.
#pragma once

#include "common/utf8.h"

#include <string>
#include <string_view>

// Writes the body of a JSON string: control characters escaped, quotes and backslashes too, bytes
// that are no UTF-8 replaced by U+FFFD. Needs memory for JSON_GROWTH times the text; returns the
// end.
enum : unsigned { JSON_GROWTH = 6 };
char *write_json_text(char *to, std::string_view text);

// Appends a JSON string with its quotes.
void append_json_string(std::string &to, std::string_view text);

// Appends the text in a form without escapes: control characters are replaced as well.
void append_clean(std::string &to, std::string_view text);
std::string clean(std::string_view text);
