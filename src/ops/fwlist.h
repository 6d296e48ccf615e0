// SPDX-License-Identifier: MIT
// zov fwlist: which devices upgrade in one step and which in two.
#pragma once

#include "cli/options.h"
#include "proto/session.h"

int fwlist_command(AcSession &session, const OptArgList &opts);
