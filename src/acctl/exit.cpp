// SPDX-License-Identifier: MIT
#include "acctl/exit.h"

#include "cli/option_checks.h"
#include "util/shell.h"

int exit_command(AcSession &, const OptArgList &opts)
{
    if (opts.count > 0)
        return unknown_option(opts.rows[0]);
    return run_shell("kill `cat /var/run/ac.pid`") == 0 ? 0 : 1;
}
