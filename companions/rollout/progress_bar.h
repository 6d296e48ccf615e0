// SPDX-License-Identifier: MIT
// Standard error: lines and, where it is a terminal, a bar below them that shows the progress.
#pragma once

#include "rollout/roll.h"

#include <string>

class ProgressBar {
public:
    ProgressBar();
    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;
    ~ProgressBar() { clear(); }

    bool is_terminal() const { return terminal_; }

    // A line of the program's own, above the bar.
    void line(const std::string &text);

    // Draws the bar, where there can be one.
    void show(const Roll &roll);
    void clear();

private:
    bool terminal_;
    size_t width_ = 0; // of what is drawn
};

// The bar, in at most `columns` characters.
std::string progress_text(const Roll &roll, size_t columns);
