// SPDX-License-Identifier: MIT
// Asks the user before something is changed.
#pragma once

#include <string>

// Whether somebody can be asked: standard error is a terminal, and the process has one of its own.
bool can_ask();

// Asks "QUESTION [y/N] " there; true for an answer that begins with y or Y. Throws StopAtOnce, see
// stop.h.
bool confirm(const std::string &question);
