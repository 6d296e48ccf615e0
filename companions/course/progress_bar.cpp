// SPDX-License-Identifier: MIT
#include "course/progress_bar.h"

#include "common/stop.h"

#include <algorithm>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

static constexpr size_t COLUMNS_USUAL = 80, BAR_MIN = 4, BAR_MAX = 30;

ProgressBar::ProgressBar(const char *program)
    : program_(program), terminal_(isatty(STDERR_FILENO) != 0)
{
}

void ProgressBar::line(const std::string &text)
{
    clear();
    write_or_stop(STDERR_FILENO, std::string(program_) + ": " + text + "\n");
}

size_t columns_of(int terminal)
{
    winsize size = {};
    return ioctl(terminal, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : COLUMNS_USUAL;
}

// The last column stays free, since terminals differ in what follows it.
void ProgressBar::show(const Progress &progress)
{
    if (!terminal_)
        return;
    std::string text = progress_text(progress, columns_of(STDERR_FILENO) - 1);
    const size_t width = text.size();
    if (width_ >= columns_of(STDERR_FILENO))
        clear();
    text.resize(std::max(width, width_), ' ');
    fprintf(stderr, "\r%s", text.c_str());
    width_ = width;
}

// A terminal that has become narrower shows the bar on several lines; these are left.
void ProgressBar::clear()
{
    if (width_ >= columns_of(STDERR_FILENO))
        fputc('\n', stderr);
    else if (width_ > 0)
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

std::string progress_text(const Progress &progress, size_t columns)
{
    const std::string batch =
        "batch " + std::to_string(progress.batch) + "/" + std::to_string(progress.batches) + " ";
    const std::string counts = "  " + std::to_string(progress.done) + " done, " +
                               std::to_string(progress.failed) + " failed";
    const auto with_bars = [&](size_t width) {
        return batch + bar(progress.batch_percent, width) + "  all " +
               bar(progress.percent, width) + counts;
    };
    const size_t bare = with_bars(0).size();
    if (columns >= bare + 2 * BAR_MIN)
        return with_bars(std::min((columns - bare) / 2, BAR_MAX));
    const std::string percent = std::to_string(progress.percent);
    std::string text = "all " + bar(progress.percent, BAR_MIN) + counts;
    if (text.size() > columns)
        text = "all " + percent + " %" + counts;
    if (text.size() > columns)
        text = percent + "% " + std::to_string(progress.done) + " ok " +
               std::to_string(progress.failed) + " bad";
    return text.substr(0, columns);
}
