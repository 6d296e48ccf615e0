// SPDX-License-Identifier: MIT
// The checks of options that commands share. Each that fails prints its own message and returns 1.
#pragma once

#include "options/command.h"
#include "util/mac.h"

int report_unknown_option(const OptArg &opt);
int report_missing_option(OptionCode code);
int report_repeated_option(const OptArg &opt);
int report_invalid_argument(const OptArg &opt); // names the option and quotes its argument

bool accepts_option(const CommandSpec &command, int code);

// Goes through the options in their order, up to the first thing that is wrong: an option that the
// command does not accept, or one for which `check` (of an OptArg) does not return 0. Returns 0
// when nothing is.
template <class Check>
int check_options(const CommandSpec &command, const OptArgList &opts, Check check)
{
    for (const OptArg &opt : opts) {
        if (!accepts_option(command, opt.code))
            return report_unknown_option(opt);
        if (check(opt) != 0)
            return 1;
    }
    return 0;
}
int check_options(const CommandSpec &command, const OptArgList &opts);

// A list of addresses that may be given only once, such as --mac of most commands.
class MacOption {
public:
    explicit MacOption(OptionCode code) : code_(code) {}

    // Takes the argument if this is the option. Returns 1 for a second one or a bad list, else 0.
    int take(const OptArg &opt);

    bool given() const { return given_; }
    const MacList &list() const { return list_; }

private:
    OptionCode code_;
    bool given_ = false;
    MacList list_;
};
