// SPDX-License-Identifier: MIT
// What a roll-out begins with: the chosen devices, what is to be done with each, and in which
// batch.
#pragma once

#include "rollout/options.h"
#include "rollout/roll.h"

// What a record tells a roll-out.
Observation observation_of(const WtpRecord &wtp);

// Chooses the devices and finds out which have newer firmware. Those that wait are to be asked,
// those that are upgrading to be followed, all others are skipped with a reason. Throws Failure,
// also when there is no device at all.
std::vector<RollDevice> make_plan(const RolloutSettings &settings);
