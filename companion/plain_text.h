// SPDX-License-Identifier: MIT
// Texts from files and devices, made fit for a terminal.
#pragma once

#include <string>
#include <string_view>

// The text with each control character, and each byte that is no part of valid UTF-8 (RFC 3629), as
// a question mark. Bidirectional and C1 controls count as control characters.
std::string plain_text(std::string_view text);

// The length of the UTF-8 character at the start of a text that is not empty; 0 when there is none.
size_t utf8_length(std::string_view text);

// The text as a JSON string, quotes included: what plain_text() replaces is escaped (\u001b), and
// bytes that are no UTF-8 become U+FFFD.
std::string quoted_text(std::string_view text);
