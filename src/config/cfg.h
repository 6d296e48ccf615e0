// SPDX-License-Identifier: MIT
// zov cfg: puts devices under management, takes them out, or configures them from JSON files.
#pragma once

#include "cli/options.h"
#include "proto/session.h"

int cfg_command(AcSession &session, const OptArgList &opts);
