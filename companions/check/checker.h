// SPDX-License-Identifier: MIT
// Checks one file after the other: zov's own checks by zov's own functions, and those of members.
#pragma once

#include "check/items.h"
#include "check/members.h"
#include "check/options.h"

class Checker {
public:
    explicit Checker(const CheckSettings &settings) : settings_(settings) {}

    // What is wrong with the file. The name "-" is that of standard input.
    std::vector<Diagnostic> check(const char *name);

    // Prints on standard output the items of the file that was checked last, behind its name (if
    // that is not null). Of a file with errors there are none.
    void print_items(const char *name) const;

private:
    struct Walk;

    const KnownMembers &known_for(const json_value *root) const;

    const CheckSettings &settings_;
    KnownMembers access_points_{DEVICE_ACCESS_POINT}, switches_{DEVICE_SWITCH};
    TlvBuffer buffer_;
    std::vector<SentItem> items_;
};
