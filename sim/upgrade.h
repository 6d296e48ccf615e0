// SPDX-License-Identifier: MIT
// Firmware upgrades of simulated devices.
#pragma once

#include "sim/fleet.h"

// How many upgrades lead to the newest firmware: 0, 1 or 2.
unsigned upgrade_steps(const Device &device);

// Asks the device to upgrade by one step. Returns its result code.
uint8_t start_upgrade(Device &device);

// Lets an upgrade that was asked for go on a little; devices do so whenever they are listed, unless
// their course is one of time.
void advance_upgrade(Device &device, time_t now);

// Brings an upgrade that takes its time to where it is by now.
void follow_clock(Device &device, time_t now);
