// SPDX-License-Identifier: MIT
// What RFC 8259 does not allow and zov's parser takes.
#pragma once

#include <string>
#include <string_view>

struct JsonFault {
    unsigned line = 0; // 0: there is none
    std::string reason;
    const char *what = "This is no JSON as RFC 8259 has it:"; // of which that is the reason
};

// The first fault of a text that has to be one JSON document.
JsonFault find_json_fault(std::string_view text);
