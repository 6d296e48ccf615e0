// SPDX-License-Identifier: MIT
#include "course/driver.h"

#include "common/stop.h"
#include "course/confirm.h"

#include <new>

// What keeps the controller from answering may pass; the limits of the course end it if not.
static void look_and_send(Course &course, Reporter &reporter)
{
    const double began = seconds_now();
    bool looked = false;
    const auto fail = [&](const char *text) {
        reporter.trouble(text);
        if (!looked)
            course.silent(began, seconds_now());
    };
    try {
        course.look();
        looked = true;
        if (reporter.log_failed())
            course.halt(Halt::log);
        course.send();
        reporter.trouble_is_over();
    } catch (const Failure &failure) {
        fail(failure.what());
    } catch (const std::bad_alloc &) {
        fail("out of memory");
    }
}

static void run_batch(Course &course, double interval, Reporter &reporter)
{
    reporter.note(course.batch_text());
    for (;;) {
        look_and_send(course, reporter);
        if (stop_wanted())
            course.halt(Halt::signal);
        reporter.show(course.progress());
        if (!course.is_running())
            return;
        wait_or_stop(interval);
    }
}

int drive(Course &course, double interval, Reporter &reporter)
{
    on_stop([&] {
        course.halt(Halt::signal);
        reporter.warn("stopping: nothing more is begun; a second signal ends at once");
    });
    stop_at_first(false);
    int signal = 0;
    try {
        for (;;) {
            if (stop_wanted())
                course.halt(Halt::signal);
            if (reporter.log_failed())
                course.halt(Halt::log);
            if (!course.begin_batch(seconds_now()))
                break;
            run_batch(course, interval, reporter);
        }
        check_stop();
    } catch (const StopAtOnce &stop) {
        course.abandon();
        signal = stop.signal;
    }
    on_stop({});
    reporter.clear_bar();
    return signal;
}

void check_can_ask(const CourseSettings &settings)
{
    if (!settings.plan && !settings.yes && !can_ask())
        throw UsageError("--yes is needed where no terminal is to ask at");
}

bool may_begin(const CourseSettings &settings, const std::string &question)
{
    return settings.yes || confirm(question);
}
