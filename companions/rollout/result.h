// SPDX-License-Identifier: MIT
// What a roll-out prints: the plan, and what came of it.
#pragma once

#include "rollout/options.h"
#include "rollout/roll.h"

// The lines of their tables, for so many columns.
std::vector<std::string> plan_lines(const Roll &roll, size_t columns);
std::vector<std::string> result_lines(const Roll &roll, size_t columns);

// Prints the plan, or the result with its exit status, on standard output as the settings say.
// Throws Failure when that does not take it.
void print_plan(const Roll &roll, const RolloutSettings &settings);
void print_result(const Roll &roll, const RolloutSettings &settings, int status);

// "12 done, 1 failed, 3 not started".
std::string counts_text(const Roll &roll);

// Its stage, in a word or two.
const char *stage_text(const RollDevice &device);
