// SPDX-License-Identifier: MIT
// measure RUNS OUTPUT COMMAND [ARG]... [::: COMMAND [ARG]...]...: runs the commands in turns, so
// that a noisy moment meets them all, with standard output into the file OUTPUT, emptied before
// each run. Prints a line for each command: the medians of processor time (user and system, ms) and
// of wall time (ms), the largest peak memory (KiB), the bytes printed last.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char **environ;

namespace {

struct Command {
    std::vector<char *> argv; // ended by null
    std::vector<double> processor, wall;
    long peak = 0;
    long long printed = 0;
};

double milliseconds(const timeval &time)
{
    return 1e3 * static_cast<double>(time.tv_sec) + 1e-3 * static_cast<double>(time.tv_usec);
}

double median(std::vector<double> times)
{
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

bool run(Command &command, const char *output)
{
    const int file = open(output, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, file, STDOUT_FILENO);

    const auto start = std::chrono::steady_clock::now();
    pid_t child = 0;
    if (posix_spawn(&child, command.argv[0], &actions, nullptr, command.argv.data(), environ) != 0)
        return false;
    int status = 0;
    rusage usage = {};
    wait4(child, &status, 0, &usage);
    const std::chrono::duration<double, std::milli> wall = std::chrono::steady_clock::now() - start;

    command.wall.push_back(wall.count());
    command.processor.push_back(milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime));
    command.peak = std::max(command.peak, usage.ru_maxrss);
    struct stat after = {};
    fstat(file, &after);
    command.printed = after.st_size;
    posix_spawn_file_actions_destroy(&actions);
    close(file);
    return status == 0;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 4)
        return 2;
    const int runs = atoi(argv[1]);
    std::vector<Command> commands(1);
    for (int i = 3; i < argc; i++) {
        if (strcmp(argv[i], ":::") == 0)
            commands.emplace_back();
        else
            commands.back().argv.push_back(argv[i]);
    }
    for (Command &command : commands)
        command.argv.push_back(nullptr);

    for (int i = 0; i < runs; i++)
        for (Command &command : commands)
            if (!run(command, argv[2])) {
                fprintf(stderr, "measure: %s failed\n", command.argv[0]);
                return 1;
            }
    for (const Command &command : commands)
        printf("%.3f %.3f %ld %lld\n", median(command.processor), median(command.wall),
               command.peak, command.printed);
    return 0;
}
