// SPDX-License-Identifier: MIT
// The wish of a user to stop: SIGINT, SIGTERM or SIGHUP. The first is noted, and acknowledged
// within the waits below; the second cuts them short, so that the program can say what it knows and
// end; the third ends the program.
#pragma once

#include <csignal>
#include <functional>
#include <string_view>

// From now on; to be called once. Signals that were ignored stay so.
void watch_for_stop();

// Called once for the first signal, outside of its handler.
void on_stop(std::function<void()> acknowledge);

// Whether a first signal has come, or has been held back by a StopHeldBack.
bool stop_wanted();

// Thrown by check_stop() when a second signal has come; or the first, while that is enough.
struct StopAtOnce {
    int signal;
};
void check_stop();
void stop_at_first(bool enough);

inline constexpr double FOREVER = 1e6; // seconds

// Waits until the file is ready for the events of poll(2), for so many seconds at most. Returns
// what poll(2) does; or -1 with errno ECANCELED when a signal comes after which check_stop()
// throws. After that it does not wait any more.
int wait_for(int file, short events, double seconds);

// Writes all of it, as wait_for() waits; what a pipe takes without waiting when a signal has ended
// that. Returns 0 or an errno.
int write_or_stop(int file, std::string_view bytes);

// Waits; returns early when a signal comes, or throws as check_stop() does.
void wait_or_stop(double seconds);

// While it lives no signal is delivered, so that nothing comes between a look at stop_wanted() and
// what follows from it.
class StopHeldBack {
public:
    StopHeldBack();
    StopHeldBack(const StopHeldBack &) = delete;
    StopHeldBack &operator=(const StopHeldBack &) = delete;
    ~StopHeldBack();

private:
    sigset_t before_;
};
