// SPDX-License-Identifier: MIT
// zov kill: finds the controller in the process list and kills it with signal 9.
#include "options/option_checks.h"
#include "util/output.h"
#include "util/shell.h"
#include "util/temp_file.h"

#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <string_view>
#include <unistd.h>

namespace {

enum : pid_t { NO_PID = 0 };

// The number that begins at a line's first digit, gathered character by character.
class FirstNumber {
public:
    void take(char c)
    {
        const bool digit = c >= '0' && c <= '9';
        if (digit && !ended_) {
            begun_ = true;
            if (number_ <= std::numeric_limits<pid_t>::max())
                number_ = 10 * number_ + (c - '0');
        } else if (begun_) {
            ended_ = true;
        }
    }

    // NO_PID when the line has no number, or one that no process can have.
    pid_t pid() const
    {
        return number_ <= std::numeric_limits<pid_t>::max() ? static_cast<pid_t>(number_) : NO_PID;
    }

private:
    int64_t number_ = 0;
    bool begun_ = false, ended_ = false;
};

} // namespace

static bool names_controller(std::string_view piece)
{
    for (const std::string_view name : {"/ac ", " ac ", "\tac "})
        if (piece.find(name) != std::string_view::npos)
            return true;
    return false;
}

// Finds the controller's process id in the list; NO_PID when no line is about it. Names are looked
// for in pieces of a line, of at most 511 characters; the process id is the first number of the
// whole line.
static pid_t find_controller(FILE *list)
{
    char piece[511];
    for (int c = getc(list); c != EOF; c = getc(list)) {
        FirstNumber number;
        bool named = false;
        size_t length = 0;
        for (; c != EOF && c != '\n'; c = getc(list)) {
            number.take(static_cast<char>(c));
            piece[length++] = static_cast<char>(c);
            if (length == sizeof piece) {
                named |= names_controller({piece, length});
                length = 0;
            }
        }
        named |= names_controller({piece, length});
        if (named && number.pid() != NO_PID)
            return number.pid();
    }
    return NO_PID;
}

// The raw status of a shell that could not open the file that a command's output is to go to.
enum : int { STATUS_NO_OUTPUT_FILE = 2 << 8 };

// Fills `pid` from the process list; the list's file is gone when this returns.
static int list_processes(pid_t &pid)
{
    char path[64], command[512];
    snprintf(path, sizeof path, "/tmp/zov.ps.%d", static_cast<int>(getpid()));
    snprintf(command, sizeof command, "ps x > %s", path);
    const TempFile file(path);
    if (!file.created())
        return report_execute_failed(command, STATUS_NO_OUTPUT_FILE, {});
    if (execute(command, {}) != 0)
        return 1;
    const std::unique_ptr<FILE, int (*)(FILE *)> list(fopen(path, "re"), fclose);
    if (list == nullptr)
        return fail("open %s failed\n", path);
    pid = find_controller(list.get());
    return 0;
}

static int kill_command(AcSession &, const OptArgList &opts)
{
    if (check_options(KILL_COMMAND, opts) != 0)
        return 1;
    pid_t pid = NO_PID;
    if (list_processes(pid) != 0)
        return 1;
    if (pid == NO_PID)
        return 0;
    char command[512];
    snprintf(command, sizeof command, "kill -9 %d", static_cast<int>(pid));
    return execute(command, {});
}

const CommandSpec KILL_COMMAND = {kill_command, "kill", "Kill AC", {}, {}};
