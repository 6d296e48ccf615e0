// SPDX-License-Identifier: MIT
#include "cli/option_checks.h"

#include "util/output.h"

int unknown_option(const OptArg &opt)
{
    return fail("ERROR: Unknown option --%s.\n", option_name(opt.code));
}

int require_option(int code)
{
    return fail("ERROR: Require --%s.\n", option_name(code));
}

int repeated_option(const OptArg &opt)
{
    return fail("ERROR: Specify more than one --%s.\n", option_name(opt.code));
}

int invalid_argument(const OptArg &opt)
{
    return fail("ERROR: Invalid --%s argument '%s'.\n", option_name(opt.code), opt.arg);
}

bool MacOption::take(const OptArg &opt)
{
    if (given_) {
        repeated_option(opt);
        return false;
    }
    if (!parse_mac_list(opt.arg, list_)) {
        invalid_argument(opt);
        return false;
    }
    given_ = true;
    return true;
}
