// SPDX-License-Identifier: MIT
// zov wtpflag: how many devices are being upgraded.
#pragma once

#include "cli/options.h"
#include "proto/session.h"

int wtpflag_command(AcSession &session, const OptArgList &opts);
