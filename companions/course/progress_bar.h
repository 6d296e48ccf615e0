// SPDX-License-Identifier: MIT
// Standard error: lines and, where it is a terminal, a bar below them that shows the progress.
#pragma once

#include <string>

struct Progress {
    size_t batch = 0, batches = 0;
    unsigned batch_percent = 0, percent = 0; // of the batch, and of all
    size_t done = 0, failed = 0;             // devices
};

class ProgressBar {
public:
    explicit ProgressBar(const char *program);
    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;
    ~ProgressBar() { clear(); }

    bool is_terminal() const { return terminal_; }

    // A line of the program's own, above the bar.
    void line(const std::string &text);

    // Draws the bar, where there can be one.
    void show(const Progress &progress);
    void clear();

private:
    const char *program_;
    bool terminal_;
    size_t width_ = 0; // of what is drawn
};

// The bar, in at most `columns` characters. Percent and counts stay to the last.
std::string progress_text(const Progress &progress, size_t columns);

// The columns of the terminal that a descriptor is, or 80.
size_t columns_of(int terminal);
