// SPDX-License-Identifier: MIT
// zov nodc: stops the controller's discovery of new devices.
#pragma once

#include "cli/options.h"
#include "proto/session.h"

int nodc_command(AcSession &session, const OptArgList &opts);
