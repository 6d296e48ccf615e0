// SPDX-License-Identifier: MIT
#include "course/reporter.h"

#include "common/failure.h"

void Reporter::write_log(const std::string &text)
{
    if (log_failed_)
        return;
    try {
        log_.add(text);
    } catch (const Failure &failure) {
        log_failed_ = true;
        bar_.line(std::string(failure.what()) + "; nothing more is begun");
    }
}

void Reporter::note(const std::string &text)
{
    if (!bar_.is_terminal())
        bar_.line(text);
    write_log(text);
}

void Reporter::warn(const std::string &text)
{
    bar_.line(text);
    write_log(text);
}

void Reporter::trouble(const std::string &text)
{
    if (!in_trouble_)
        warn(text + "; trying again");
    in_trouble_ = true;
}

void Reporter::trouble_is_over()
{
    if (in_trouble_)
        warn("the controller answers again");
    in_trouble_ = false;
}
