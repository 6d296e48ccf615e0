// SPDX-License-Identifier: MIT
// zov rst: resets devices.
#pragma once

#include "cli/options.h"
#include "proto/session.h"

int rst_command(AcSession &session, const OptArgList &opts);
