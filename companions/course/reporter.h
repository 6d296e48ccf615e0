// SPDX-License-Identifier: MIT
// Tells what happens while devices are worked on: in the log, and on standard error.
#pragma once

#include "course/event_log.h"
#include "course/progress_bar.h"

class Reporter {
public:
    Reporter(const EventLog &log, ProgressBar &bar) : log_(log), bar_(bar) {}

    // What happens as it should, which a terminal shows by its bar; what the user should know; and
    // what only the log has.
    void note(const std::string &text);
    void warn(const std::string &text);
    void write_log(const std::string &text);

    // Warns of a request that failed and will be tried again, once until one succeeds.
    void trouble(const std::string &text);
    void trouble_is_over();

    void show(const Progress &progress) { bar_.show(progress); }
    void clear_bar() { bar_.clear(); }

    // Whether a line of the log was lost. Nothing should be begun then.
    bool log_failed() const { return log_failed_; }

private:
    const EventLog &log_;
    ProgressBar &bar_;
    bool log_failed_ = false, in_trouble_ = false;
};
