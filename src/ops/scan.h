// SPDX-License-Identifier: MIT
// zov scan: a site survey by devices, on one band.
#pragma once

#include "cli/options.h"
#include "proto/session.h"

int scan_command(AcSession &session, const OptArgList &opts);
