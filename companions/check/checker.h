// SPDX-License-Identifier: MIT
// Checks one file after the other: zov's own checks by zov's own functions, and those of members.
#pragma once

#include "check/items.h"
#include "check/members.h"

class Checker {
public:
    // Without `digests` the items have zeros in their place, which costs no process each.
    Checker(DeviceKind kind, bool digests) : known_(kind), digests_(digests) {}

    // Prints what is wrong with the file, on standard error; true when nothing is. The name "-" is
    // that of standard input.
    bool check(const char *name);

    // Prints on standard output the items of the file that was checked last, behind its name (if
    // that is not null). Of a file with diagnostics there are none.
    void print_items(const char *name) const;

private:
    struct Walk;

    KnownMembers known_;
    bool digests_;
    TlvBuffer buffer_;
    std::vector<SentItem> items_;
};
