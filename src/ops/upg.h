// SPDX-License-Identifier: MIT
// zov upg: starts a firmware upgrade of devices.
#pragma once

#include "cli/options.h"
#include "proto/session.h"

int upg_command(AcSession &session, const OptArgList &opts);
