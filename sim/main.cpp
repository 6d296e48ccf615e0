// SPDX-License-Identifier: MIT
// ac-sim: a simulated controller, for trying zov and for testing scripts that use it.
#include "common/trusted_files.h"
#include "sim/options.h"
#include "sim/server.h"

#include <arpa/inet.h>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <unistd.h>

static const char *pid_file = "", *memory_file = "";

static void remove_pid_file()
{
    unlink(pid_file);
}

// Ends the program in the middle of a request, which may take long with a large fleet.
static void end_at_once(int)
{
    remove_pid_file();
    unlink(memory_file);
    _exit(0);
}

// Blocks the signals that end the program, and gives them a handler that answers to them while they
// are let through. A hangup that is ignored, see nohup(1), is none of them. Returns a descriptor
// that becomes readable when one of them waits.
static int watch_for_end(sigset_t &signals)
{
    sigemptyset(&signals);
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        struct sigaction action = {};
        sigaction(number, nullptr, &action);
        if (number == SIGHUP && action.sa_handler == SIG_IGN)
            continue;
        action.sa_handler = end_at_once;
        sigfillset(&action.sa_mask);
        sigaddset(&signals, number);
        sigaction(number, &action, nullptr);
    }
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC);
}

// Whether it is a pid file of the caller's whose process is gone.
static bool is_left_behind(const char *path)
{
    const Descriptor file(open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat state = {};
    if (fstat(file.get(), &state) != 0 || !S_ISREG(state.st_mode) || state.st_uid != geteuid())
        return false;
    char text[32];
    const ssize_t length = read(file.get(), text, sizeof text);
    if (length < 1 || text[length - 1] != '\n')
        return false;
    text[length - 1] = '\0';
    pid_t pid = 0;
    return take_number(text, 1, INT_MAX, pid) && kill(pid, 0) != 0 && errno == ESRCH;
}

// Writes the process id into a new file, which is there until the program ends.
static void create_pid_file(const char *path)
{
    if (is_left_behind(path))
        unlink(path);
    Descriptor file(open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644));
    int error = errno;
    if (file) {
        pid_file = path;
        atexit(remove_pid_file);
        error = write_all(file.get(), std::to_string(getpid()) + "\n");
        if (error == 0)
            error = file.close();
    }
    if (error != 0)
        throw Failure(with_reason(std::string("cannot create the pid file ") + path, error));
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
    const int stop = watch_for_end(signals);
    char address[INET_ADDRSTRLEN];
    inet_ntop(AF_INET, &options.address, address, sizeof address);
    const int listener = start_listening(options);
    if (stop < 0 || listener < 0)
        throw Failure(with_reason(std::string("cannot listen on ") + address + ":" +
                                      std::to_string(options.port),
                                  errno));
    if (*options.pid_file != '\0')
        create_pid_file(options.pid_file);
    if (printf("ac-sim: listening on %s:%u\n", address, options.port) < 0 || fflush(stdout) != 0)
        throw Failure(with_reason("cannot write to standard output", errno));
    serve_clients(listener, stop, signals, options, controller);
    return 0;
}

int main(int argc, char **argv)
{
    return run_program(SIM_PROGRAM, argc, argv, run);
}
