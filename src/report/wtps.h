// SPDX-License-Identifier: MIT
// zov wtps: the devices that the controller knows, in the forms that the options choose.
#pragma once

#include "cli/options.h"
#include "proto/session.h"

int wtps_command(AcSession &session, const OptArgList &opts);
