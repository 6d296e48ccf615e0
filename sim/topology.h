// SPDX-License-Identifier: MIT
// What is connected to the ports of the simulated switches.
#pragma once

#include "sim/fleet.h"

// Each switch serves the access points of its floor and is joined to those of the floors above and
// below. Those that are online see each other: as neighbours, in the state of their ports and in
// the power that these give. Nothing here is drawn, so that the rest of a fleet stays the same.
void cable(Fleet &fleet, const FleetSize &size, time_t now);
