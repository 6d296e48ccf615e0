// SPDX-License-Identifier: MIT
// The loop of the tools that change devices in batches: it looks at the devices of a batch, sends
// what is due, waits, and begins the next batch. What they do with a device is theirs to say.
#pragma once

#include "common/command_line.h"
#include "common/stop.h"
#include "course/batches.h"
#include "course/progress_bar.h"
#include "course/reporter.h"

#include <chrono>

// Why nothing is begun any more.
enum class Halt : uint8_t { none, signal, failures, silence, log, differs };

// Seconds on a clock that nobody sets.
inline double seconds_now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

// Time as devices have it: it stands still while the controller does not answer.
class ServiceClock {
public:
    // The controller answered at that time; or a question of that time has had no answer.
    void answered(double now)
    {
        lost_ += silence(now);
        is_silent_ = false;
    }
    void silent(double since)
    {
        since_ = is_silent_ ? since_ : since;
        is_silent_ = true;
    }

    [[nodiscard]] double time(double now) const { return (is_silent_ ? since_ : now) - lost_; }
    [[nodiscard]] double lost() const { return lost_; }
    [[nodiscard]] double silence(double now) const { return is_silent_ ? now - since_ : 0; }

private:
    double since_ = 0, lost_ = 0;
    bool is_silent_ = false;
};

// How long things may take, in seconds, and what may fail.
struct CourseSettings {
    std::vector<Share> batch;
    Share max_failures;
    double deadline = 0, begin = 0, settle = 0, outage = 0, interval = 0;
    bool keep_order = false, plan = false, yes = false, json = false;
    const char *log = nullptr;
};

// clang-format off
#define COURSE_OPTIONS(batch_sizes)                                                                \
    {{.name = "batch", .argument = "SIZES",                                                        \
      .help = "sizes of the batches in turn: N or N%, joined by commas",                           \
      .expected = "numbers from 1 to 10000, or percentages such as 25%", .initial = batch_sizes},  \
     [](const char *text, auto &to) { return take_batch_sizes(text, to.batch); }},                 \
    {{.name = "keep-order", .argument = nullptr, .help = "leave the devices in their order"},      \
     [](const char *, auto &to) { return take_flag(to.keep_order); }},                             \
    {{.name = "max-failures", .argument = "N", .help = "stop when more than N or N% failed",       \
      .expected = "a number, or a percentage such as 5%", .initial = "0"},                         \
     [](const char *text, auto &to) { return take_share(text, 0, to.max_failures); }},             \
    {{.name = "begin", .argument = "SEC", .help = "how long a device may take to begin",           \
      .expected = "seconds", .initial = "60"},                                                     \
     [](const char *text, auto &to) { return take_seconds(text, 0, 1e9, to.begin); }},             \
    {{.name = "settle", .argument = "SEC", .help = "how long a device has to stay as it should be", \
      .expected = "seconds", .initial = "30"},                                                     \
     [](const char *text, auto &to) { return take_seconds(text, 0, 1e9, to.settle); }},            \
    {{.name = "deadline", .argument = "SEC", .help = "give a device up after that time",           \
      .expected = "seconds from 0.1 on", .initial = "900"},                                        \
     [](const char *text, auto &to) { return take_seconds(text, 0.1, 1e9, to.deadline); }},        \
    {{.name = "outage", .argument = "SEC", .help = "end when the controller is silent so long",    \
      .expected = "seconds from 0.1 on", .initial = "900"},                                        \
     [](const char *text, auto &to) { return take_seconds(text, 0.1, 1e9, to.outage); }},          \
    {{.name = "interval", .argument = "SEC", .help = "polling interval, 0.05 at least",            \
      .expected = "seconds from 0.05 to 3600", .initial = "5"},                                    \
     [](const char *text, auto &to) { return take_seconds(text, 0.05, 3600, to.interval); }},      \
    {{.name = "plan", .argument = nullptr, .help = "print what would be done, and change nothing"}, \
     [](const char *, auto &to) { return take_flag(to.plan); }},                                   \
    {{.name = "dry-run", .argument = nullptr, .help = "the same"},                                 \
     [](const char *, auto &to) { return take_flag(to.plan); }},                                   \
    {{.name = "yes", .argument = nullptr, .help = "do not ask before something is changed"},       \
     [](const char *, auto &to) { return take_flag(to.yes); }},                                    \
    {{.name = "json", .argument = nullptr, .help = "print the plan or the result as JSON"},        \
     [](const char *, auto &to) { return take_flag(to.json); }},                                   \
    {{.name = "log", .argument = "FILE", .help = "append a line for each event"},                  \
     [](const char *text, auto &to) { return take_text(text, to.log); }}
// clang-format on

// What a tool does with the devices of a batch. look() and send() ask the controller; the Failure
// or bad_alloc that they throw is reported, and they are called again.
class Course {
public:
    virtual bool begin_batch(double now) = 0; // false: none begins any more
    virtual bool is_running() const = 0;      // whether the batch has not ended
    virtual std::string batch_text() const = 0;
    virtual Progress progress() const = 0;

    virtual void look() = 0; // at the devices of the batch
    virtual void send() = 0; // what is due by what was seen

    virtual void silent(double since, double now) = 0; // look() failed, which began at `since`
    virtual void halt(Halt why) = 0;                   // nothing is to be begun any more
    virtual void abandon() = 0; // the program ends: say of each device what is known

protected:
    ~Course() = default;
};

// Runs the batches, until none is left or none begins any more. Returns the signal that ended it at
// once, or 0.
int drive(Course &course, double interval, Reporter &reporter);

// Calls `ask` until it gets an answer, for `endpoint.timeout` seconds: for a controller that is
// busy, or that goes away after it has answered once, which `answered` says and keeps. Throws
// Failure for one that is not there at all, and StopAtOnce.
template <class Ask> void ask_patiently(double timeout, bool &answered, Ask ask)
{
    const double end = seconds_now() + timeout;
    for (;;) {
        try {
            ask();
            answered = true;
            return;
        } catch (const Failure &failure) {
            if (failure.cause == Cause::busy)
                answered = true;
            if (!answered || seconds_now() >= end)
                throw;
        }
        wait_or_stop(0.5);
    }
}

// Whether any device may be changed now: asks the user "QUESTION [y/N] " unless --yes was given.
// check_can_ask() throws UsageError when that will not be possible.
void check_can_ask(const CourseSettings &settings);
bool may_begin(const CourseSettings &settings, const std::string &question);
