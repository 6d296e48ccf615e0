// SPDX-License-Identifier: MIT
// zov mem: the controller's memory blocks in use.
#pragma once

#include "cli/options.h"
#include "proto/session.h"

int mem_command(AcSession &session, const OptArgList &opts);
