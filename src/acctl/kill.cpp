// SPDX-License-Identifier: MIT
#include "acctl/kill.h"

#include "cli/option_checks.h"
#include "util/output.h"
#include "util/temp_file.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <unistd.h>

static int run(const char *command)
{
    standard_output.flush();
    const int status = system(command);
    return status == 0 ? 0 : fail("ERROR: execute '%s' error=%d\n", command, status);
}

static bool names_controller(const char *line)
{
    return strstr(line, "/ac ") != nullptr || strstr(line, " ac ") != nullptr ||
           strstr(line, "\tac ") != nullptr;
}

enum : int { NO_PID = -1 };

// The number that begins at the line's first digit.
static int first_number(const char *line)
{
    const char *digits = strpbrk(line, "0123456789");
    return digits == nullptr ? NO_PID : atoi(digits);
}

// Finds the controller's process id in the list; NO_PID when no line is about it.
static int find_controller(FILE *list)
{
    char line[512];
    while (fgets(line, sizeof line, list) != nullptr) {
        const int pid = names_controller(line) ? first_number(line) : NO_PID;
        if (pid != NO_PID)
            return pid;
    }
    return NO_PID;
}

// Fills `pid` from the process list; the list's file is gone when this returns.
static int list_processes(int &pid)
{
    char path[64];
    snprintf(path, sizeof path, "/tmp/zov.ps.%d", static_cast<int>(getpid()));
    const TempFile file(path);
    if (!file.created())
        return fail("ERROR: create %s failed.\n", path);

    char command[512];
    snprintf(command, sizeof command, "ps x > %s", path);
    if (run(command) != 0)
        return 1;
    const std::unique_ptr<FILE, int (*)(FILE *)> list(fopen(path, "r"), fclose);
    if (list == nullptr)
        return fail("open %s failed\n", path);
    pid = find_controller(list.get());
    return 0;
}

int kill_command(AcSession &, const OptArgList &opts)
{
    if (opts.count > 0)
        return unknown_option(opts.rows[0]);
    int pid = NO_PID;
    if (list_processes(pid) != 0)
        return 1;
    if (pid == NO_PID)
        return 0;
    char command[512];
    snprintf(command, sizeof command, "kill -9 %d", pid);
    return run(command);
}
