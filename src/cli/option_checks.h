// SPDX-License-Identifier: MIT
// The checks of options that many commands share. Each check prints its own message; the functions
// that only report return 1, the status of the command that failed.
#pragma once

#include "cli/options.h"
#include "util/mac.h"

int unknown_option(const OptArg &opt);
int require_option(int code);
int repeated_option(const OptArg &opt);
int invalid_argument(const OptArg &opt); // names the option and quotes its argument

// A list of addresses that may be given only once, such as --mac of most commands.
class MacOption {
public:
    // Takes the option's argument; false, with the message printed, for a second one or a bad one.
    bool take(const OptArg &opt);

    bool given() const { return given_; }
    const MacList &list() const { return list_; }

private:
    bool given_ = false;
    MacList list_;
};
