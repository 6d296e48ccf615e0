// SPDX-License-Identifier: MIT
// Values of a report as text. Each function that returns a text keeps it in a buffer of its own,
// valid until its next call.
#pragma once

#include "device/wtp_record.h"
#include "util/output.h"

#include <cstdint>
#include <string_view>

// What of a device a report shows.
struct ReportParts {
    bool password = false; // also the digest of the device's password
    bool basic = false;    // neither radios nor ports
};

enum : unsigned { DIGEST_TEXT_MAX = 32, DURATION_TEXT_MAX = 18 };

// Writes 32 lower-case hexadecimal digits, unterminated, and returns their end.
char *write_digest(char *to, const Md5Digest &digest);

// Writes "1d:2h:3m:4s", unterminated, and returns the text's end.
char *write_duration(char *to, uint32_t seconds);

// A rate code as text of at most 15 characters: 0 "auto", below 33 "MCS%d" of code - 1, 33 to 110
// "VHTMCS%d" of code - 101, above that kilobits per second as megabits ("5.5M").
const char *data_rate_text(int32_t code);

// Seconds since 1970 as ctime(3) writes them in local time, line end included; 0 is "\n" alone.
const char *time_text(uint32_t seconds);

// Writes the body of a JSON string: backspace, tab, line feed, form feed, carriage return, double
// quote, slash and backslash escaped with a backslash, all other bytes unchanged.
void json_escape(Output &out, std::string_view text);

// The same into memory for twice the text; returns the end.
char *write_escaped(char *to, std::string_view text);
