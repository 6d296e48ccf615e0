// SPDX-License-Identifier: MIT
// Tells what happens in a roll-out: in the log, and on standard error.
#pragma once

#include "rollout/event_log.h"
#include "rollout/progress_bar.h"

class Reporter : public Roll::Listener {
public:
    Reporter(const EventLog &log, ProgressBar &bar) : log_(log), bar_(bar) {}

    // What happens as it should, which a terminal shows by its bar; and what the user should know.
    void note(const std::string &text);
    void warn(const std::string &text);

    // Warns of a request that failed and will be tried again, once until one succeeds.
    void trouble(const std::string &text);
    void trouble_is_over();

    void changed(const RollDevice &device) override;

    // Whether a line of the log was lost. The roll-out should not go on then.
    bool log_failed() const { return log_failed_; }

private:
    void write_log(const std::string &text);

    const EventLog &log_;
    ProgressBar &bar_;
    bool log_failed_ = false, in_trouble_ = false;
};
