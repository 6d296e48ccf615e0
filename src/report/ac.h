// SPDX-License-Identifier: MIT
// zov ac: the controller's summary.
#pragma once

#include "cli/options.h"
#include "proto/session.h"

int ac_command(AcSession &session, const OptArgList &opts);
