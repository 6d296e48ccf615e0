// SPDX-License-Identifier: MIT
// The wish of a user to stop: SIGINT or SIGTERM. The first is noted; a second one ends the program.
#pragma once

// From now on. A SIGINT that was ignored stays so.
void watch_for_stop();

bool stop_wanted();

// Waits; returns early when the wish comes up.
void wait_or_stop(double seconds);
