// SPDX-License-Identifier: MIT
// zov exit: ends the controller with the default signal, by its pid file.
#include "options/option_checks.h"
#include "util/shell.h"

static int exit_command(AcSession &, const OptArgList &opts)
{
    if (check_options(EXIT_COMMAND, opts) != 0)
        return 1;
    return run_shell("kill `cat /var/run/ac.pid`") == 0 ? 0 : 1;
}

const CommandSpec EXIT_COMMAND = {exit_command, "exit", "Terminate AC", {}, {}};
