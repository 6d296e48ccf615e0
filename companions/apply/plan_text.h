// SPDX-License-Identifier: MIT
// A plan for people and for programs.
#pragma once

#include "apply/plan.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

// Devices with the same changes are one block. Secrets are not shown.
std::vector<std::string> plan_lines(const ApplyPlan &plan);

// "Change 2 settings on 14 devices in 3 batches?"
std::string question_text(const ApplyPlan &plan);

nlohmann::ordered_json plan_json(const ApplyPlan &plan, const ApplySettings &settings);

// What is common to a device of a plan and of a result.
nlohmann::ordered_json device_json(const PlannedDevice &device, const ApplyPlan &plan);

// 3: something differs; else 1: something cannot be compared; else 0.
int plan_status(const ApplyPlan &plan);
