// SPDX-License-Identifier: MIT
#include "rollout/stop.h"

#include <cmath>
#include <csignal>
#include <ctime>
#include <poll.h>

static volatile sig_atomic_t wanted = 0;
static bool interrupt_ignored = false, noticed = false;

static void note(int)
{
    wanted = 1;
    signal(SIGTERM, SIG_DFL);
    if (!interrupt_ignored)
        signal(SIGINT, SIG_DFL);
}

void watch_for_stop()
{
    struct sigaction action = {}, before = {};
    action.sa_handler = note;
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, nullptr, &before);
    interrupt_ignored = before.sa_handler == SIG_IGN;
    if (!interrupt_ignored)
        sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

bool stop_wanted()
{
    return wanted != 0;
}

// The signals are let through while it waits only, so that none is missed just before.
void wait_or_stop(double seconds)
{
    sigset_t both, before;
    sigemptyset(&both);
    sigaddset(&both, SIGINT);
    sigaddset(&both, SIGTERM);
    sigprocmask(SIG_BLOCK, &both, &before);
    const double whole = std::floor(seconds);
    const timespec time = {static_cast<time_t>(whole), static_cast<long>((seconds - whole) * 1e9)};
    if (stop_wanted() == noticed)
        ppoll(nullptr, 0, &time, &before);
    noticed = stop_wanted();
    sigprocmask(SIG_SETMASK, &before, nullptr);
}
