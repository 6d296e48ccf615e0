// SPDX-License-Identifier: MIT
// zov cac: lets devices connect to another controller.
#pragma once

#include "cli/options.h"
#include "proto/session.h"

int cac_command(AcSession &session, const OptArgList &opts);
