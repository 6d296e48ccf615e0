// SPDX-License-Identifier: MIT
// zov sh: runs a shell command on devices and prints what they answer.
#pragma once

#include "cli/options.h"
#include "proto/session.h"

int sh_command(AcSession &session, const OptArgList &opts);
