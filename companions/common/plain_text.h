// SPDX-License-Identifier: MIT
// Texts from files and devices, made fit for a terminal.
#pragma once

#include <string>
#include <string_view>

// The text with a question mark for each control character, the bidirectional ones included, for
// each invisible character (such as U+00AD, U+200B and U+FEFF) and for each byte that is no UTF-8.
std::string plain_text(std::string_view text);

// The text as a JSON string, quotes included: what plain_text() replaces is escaped (\u001b), and
// each byte that is no UTF-8 becomes U+FFFD.
std::string quoted_text(std::string_view text);
