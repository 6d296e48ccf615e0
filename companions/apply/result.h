// SPDX-License-Identifier: MIT
// What an apply has done, for people and for programs.
#pragma once

#include "apply/apply.h"
#include "apply/plan.h"

#include <string>
#include <vector>

struct ApplyResult {
    const ApplyPlan &plan;
    const Apply &apply;
    int status = 0;
    std::string undo; // the file; empty when nothing was saved or changed
};

std::vector<std::string> result_lines(const ApplyResult &result, size_t columns);
std::string counts_text(const ApplyResult &result);

// On standard output, as a table or as JSON.
void print_result(const ApplyResult &result, const ApplySettings &settings);

// Whether a device has been changed, or may have been.
bool may_have_changed(const ApplyDevice &device);
