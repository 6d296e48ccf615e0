// SPDX-License-Identifier: MIT
// zov kill: finds the controller in the process list and kills it with signal 9.
#pragma once

#include "cli/options.h"
#include "proto/session.h"

int kill_command(AcSession &session, const OptArgList &opts);
