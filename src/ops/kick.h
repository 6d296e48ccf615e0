// SPDX-License-Identifier: MIT
// zov kick: disconnects wireless clients from a WLAN of devices.
#pragma once

#include "cli/options.h"
#include "proto/session.h"

int kick_command(AcSession &session, const OptArgList &opts);
