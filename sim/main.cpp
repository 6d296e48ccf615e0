// SPDX-License-Identifier: MIT
// ac-sim: a simulated controller, for trying zov and for testing scripts that use it.
#include "sim/options.h"
#include "sim/server.h"

#include <arpa/inet.h>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/signalfd.h>
#include <unistd.h>

static const char *pid_file = "", *memory_file = "";

// Ends the program in the middle of a request, which may take long with a large fleet.
static void end_at_once(int)
{
    if (*pid_file != '\0')
        unlink(pid_file);
    unlink(memory_file);
    _exit(0);
}

// Blocks the signals and gives them a handler that answers to them while they are let through.
// Returns a descriptor that becomes readable when one of them waits.
static int watch_for_end(const sigset_t &signals)
{
    struct sigaction action = {};
    action.sa_handler = end_at_once;
    action.sa_mask = signals;
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC);
}

static int complain(const std::string &what)
{
    fprintf(stderr, "ac-sim: cannot %s: %s\n", what.c_str(), strerror(errno));
    return 1;
}

// Writes the process id into a new file; false with errno set, and without a file that is ours.
static bool create_pid_file(const char *path)
{
    const int file = open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
    if (file < 0)
        return false;
    const bool written = dprintf(file, "%d\n", getpid()) > 0;
    if (close(file) == 0 && written)
        return true;
    const int error = errno;
    unlink(path);
    errno = error;
    return false;
}

static int run(int argc, char **argv)
{
    SimOptions options;
    std::vector<const char *> operands;
    if (!read_command_line(argc, argv, SIM_PROGRAM, SIM_OPTIONS, options, operands))
        return 0;
    if (!operands.empty())
        throw UsageError("unexpected argument '" + std::string(operands[0]) + "'");
    Controller controller(options.controller);
    memory_file = controller.memory_path();
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    const int stop = watch_for_end(signals);
    const int listener = start_listening(options);
    if (stop < 0 || listener < 0)
        return complain("listen");
    if (*options.pid_file != '\0' && !create_pid_file(options.pid_file))
        return complain(std::string("create the pid file ") + options.pid_file);
    pid_file = options.pid_file;
    char address[INET_ADDRSTRLEN];
    inet_ntop(AF_INET, &options.address, address, sizeof address);
    printf("ac-sim: listening on %s:%u\n", address, options.port);
    fflush(stdout);
    serve_clients(listener, stop, signals, options, controller);
    if (*pid_file != '\0')
        unlink(pid_file);
    return 0;
}

int main(int argc, char **argv)
{
    return run_program(SIM_PROGRAM, argc, argv, run);
}
