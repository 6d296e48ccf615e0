// SPDX-License-Identifier: MIT
#include "util/shell.h"

#include "util/output.h"

#include <csignal>
#include <cstdlib>

int run_shell(const char *command)
{
    standard_output.flush();
    signal(SIGCHLD, SIG_DFL);
    return system(command);
}

int execute(const char *command, const Messages &messages)
{
    const int status = run_shell(command);
    return status == 0 ? 0 : report_execute_failed(command, status, messages);
}

int report_execute_failed(const char *command, int wait_status, const Messages &messages)
{
    return messages.report("ERROR: execute '%s' error=%d\n", command, wait_status);
}
