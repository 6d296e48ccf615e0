// SPDX-License-Identifier: MIT
#include "rollout/progress_bar.h"

#include "rollout/options.h"

#include <algorithm>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

static constexpr size_t COLUMNS_USUAL = 80, BAR_MIN = 4, BAR_MAX = 30;

ProgressBar::ProgressBar() : terminal_(isatty(STDERR_FILENO) != 0) {}

void ProgressBar::line(const std::string &text)
{
    clear();
    fprintf(stderr, "%s: %s\n", ROLLOUT_PROGRAM.name, text.c_str());
}

static size_t columns_of_terminal()
{
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col
                                                                           : COLUMNS_USUAL;
}

// The last column stays free, since terminals differ in what follows it.
void ProgressBar::show(const Roll &roll)
{
    if (!terminal_)
        return;
    std::string text = progress_text(roll, columns_of_terminal() - 1);
    const size_t width = text.size();
    text.resize(std::max(width, width_), ' ');
    fprintf(stderr, "\r%s", text.c_str());
    width_ = width;
}

void ProgressBar::clear()
{
    if (width_ > 0)
        fprintf(stderr, "\r%*s\r", static_cast<int>(width_), "");
    width_ = 0;
}

static std::string bar(unsigned percent, size_t width)
{
    const std::string digits = std::to_string(percent);
    std::string text(width * percent / 100, '#');
    text.resize(width, '-');
    return "[" + text + "] " + std::string(3 - digits.size(), ' ') + digits + " %";
}

std::string progress_text(const Roll &roll, size_t columns)
{
    using enum UpgradeStage;
    const std::string batch =
        "batch " + std::to_string(roll.batch()) + "/" + std::to_string(roll.batches()) + " ";
    const size_t bad = roll.count(failed) + roll.count(timed_out);
    const std::string counts =
        "  " + std::to_string(roll.count(done)) + " done, " + std::to_string(bad) + " failed";
    const auto with_bars = [&](size_t width) {
        return batch + bar(roll.batch_progress(), width) + "  all " +
               bar(roll.whole_progress(), width) + counts;
    };
    const size_t bare = with_bars(0).size();
    const size_t width = columns > bare ? (columns - bare) / 2 : 0;
    return with_bars(std::clamp(width, BAR_MIN, BAR_MAX)).substr(0, columns);
}
