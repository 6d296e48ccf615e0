// SPDX-License-Identifier: MIT
// zov dbg: switches debug logging of the controller or of devices.
#pragma once

#include "cli/options.h"
#include "proto/session.h"

int dbg_command(AcSession &session, const OptArgList &opts);
