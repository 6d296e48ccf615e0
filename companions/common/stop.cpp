// SPDX-License-Identifier: MIT
#include "common/stop.h"

#include "common/failure.h"
#include "common/trusted_files.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cmath>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

static volatile sig_atomic_t signals_seen = 0, last_signal = 0;
static sigset_t watched;        // the signals that count
static int noted[2] = {-1, -1}; // a pipe that has a byte for each signal not yet noticed
static bool acknowledged = false;
static int enough_signals = 2; // to end at once
static std::function<void()> acknowledge_stop;

static constexpr int SIGNALS[] = {SIGINT, SIGTERM, SIGHUP};

static void note(int number)
{
    const int error = errno;
    last_signal = number;
    signals_seen = signals_seen + 1;
    if (signals_seen == 2)
        for (const int other : SIGNALS)
            if (sigismember(&watched, other) == 1)
                signal(other, SIG_DFL);
    [[maybe_unused]] const ssize_t written = write(noted[1], "", 1);
    errno = error;
}

void watch_for_stop()
{
    if (pipe2(noted, O_CLOEXEC | O_NONBLOCK) != 0)
        throw Failure(with_reason("cannot watch for signals", errno));
    struct sigaction action = {}, before = {};
    action.sa_handler = note;
    action.sa_flags = SA_RESTART;
    sigemptyset(&watched);
    for (const int number : SIGNALS) {
        sigaction(number, nullptr, &before);
        if (before.sa_handler != SIG_IGN)
            sigaddset(&watched, number);
    }
    action.sa_mask = watched;
    for (const int number : SIGNALS)
        if (sigismember(&watched, number) == 1)
            sigaction(number, &action, nullptr);
}

void on_stop(std::function<void()> acknowledge)
{
    acknowledge_stop = std::move(acknowledge);
}

bool stop_wanted()
{
    sigset_t held;
    if (signals_seen != 0 || sigpending(&held) != 0)
        return signals_seen != 0;
    return std::any_of(std::begin(SIGNALS), std::end(SIGNALS), [&](int number) {
        return noted[0] >= 0 && sigismember(&held, number) == 1 &&
               sigismember(&watched, number) == 1;
    });
}

void check_stop()
{
    if (signals_seen >= enough_signals)
        throw StopAtOnce{last_signal};
}

void stop_at_first(bool enough)
{
    enough_signals = enough ? 1 : 2;
}

// Empties the pipe; acknowledges the first signal.
static void notice()
{
    char bytes[8];
    while (read(noted[0], bytes, sizeof bytes) > 0)
        ;
    if (acknowledged || !acknowledge_stop || enough_signals == 1)
        return;
    acknowledged = true;
    acknowledge_stop();
}

// Waits as wait_for() does. With `returns_early` the first signal ends it as well: 0.
static int wait(int file, short events, double seconds, bool returns_early)
{
    using Clock = std::chrono::steady_clock;
    const bool waits = signals_seen < enough_signals;
    const auto end = Clock::now() + std::chrono::duration<double>(waits ? seconds : 0);
    for (;;) {
        const auto left = std::chrono::duration<double, std::milli>(end - Clock::now()).count();
        pollfd ready[] = {{file, events, 0}, {noted[0], POLLIN, 0}};
        const int count = poll(ready, 2, static_cast<int>(std::ceil(std::clamp(left, 0.0, 1e9))));
        if (count < 0 && errno != EINTR)
            return -1;
        if (count > 0 && ready[1].revents != 0) {
            notice();
            if (waits && signals_seen >= enough_signals) {
                errno = ECANCELED;
                return -1;
            }
            if (returns_early)
                return 0;
        }
        if (count > 0 && ready[0].revents != 0)
            return 1;
        if (count == 0 && left <= 0)
            return 0;
    }
}

int wait_for(int file, short events, double seconds)
{
    return wait(file, events, seconds, false);
}

int write_or_stop(int file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const int ready = wait_for(file, POLLOUT, FOREVER); // a pipe takes PIPE_BUF bytes then
        if (ready <= 0)
            return ready < 0 ? errno : EAGAIN;
        if (const int error = write_all(file, bytes.substr(0, PIPE_BUF)); error != 0)
            return error;
        bytes.remove_prefix(std::min<size_t>(bytes.size(), PIPE_BUF));
    }
    return 0;
}

void wait_or_stop(double seconds)
{
    wait(-1, 0, seconds, true);
    check_stop();
}

StopHeldBack::StopHeldBack()
{
    sigset_t all;
    sigemptyset(&all);
    for (const int number : SIGNALS)
        sigaddset(&all, number);
    sigprocmask(SIG_BLOCK, &all, &before_);
}

StopHeldBack::~StopHeldBack()
{
    sigprocmask(SIG_SETMASK, &before_, nullptr);
}
