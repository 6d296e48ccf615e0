// SPDX-License-Identifier: MIT
// Calendar times as text.
#pragma once

#include <cstdint>

// Seconds since 1970 (of 32 bits, signed or not) in local time, as ctime(3) writes them, line end
// included. The text is valid until the next call.
const char *calendar_text(int64_t seconds);
