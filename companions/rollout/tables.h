// SPDX-License-Identifier: MIT
// What a roll-out prints on standard output: the plan, and the summary at the end.
#pragma once

#include "rollout/roll.h"

// Both throw Failure when standard output does not take them.
void print_plan(const Roll &roll);
void print_summary(const Roll &roll);

// A device's name and its version as they are printed: without control characters, and not endless.
std::string name_text(const RollDevice &device);
std::string version_text(const std::string &version);

// Its stage, in a word or two.
const char *stage_text(const RollDevice &device);
