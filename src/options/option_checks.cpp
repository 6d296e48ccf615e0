// SPDX-License-Identifier: MIT
#include "options/option_checks.h"

#include "util/output.h"

int report_unknown_option(const OptArg &opt)
{
    return fail("ERROR: Unknown option --%s.\n", option_name(opt.code));
}

int report_missing_option(OptionCode code)
{
    return fail("ERROR: Require --%s.\n", option_name(code));
}

int report_repeated_option(const OptArg &opt)
{
    return fail("ERROR: Specify more than one --%s.\n", option_name(opt.code));
}

int report_invalid_argument(const OptArg &opt)
{
    return fail("ERROR: Invalid --%s argument '%s'.\n", option_name(opt.code), opt.arg);
}

bool accepts_option(const CommandSpec &command, int code)
{
    for (const CommandOption *row = command.options; row->code != OPT_NONE; row++)
        if (row->code == code)
            return true;
    return false;
}

int check_options(const CommandSpec &command, const OptArgList &opts)
{
    return check_options(command, opts, [](const OptArg &) { return 0; });
}

int MacOption::take(const OptArg &opt)
{
    if (opt.code != code_)
        return 0;
    if (given_)
        return report_repeated_option(opt);
    if (!parse_mac_list(opt.arg, list_))
        return report_invalid_argument(opt);
    given_ = true;
    return 0;
}
