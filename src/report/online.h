// SPDX-License-Identifier: MIT
// zov online: how many devices are online.
#pragma once

#include "cli/options.h"
#include "proto/session.h"

int online_command(AcSession &session, const OptArgList &opts);
