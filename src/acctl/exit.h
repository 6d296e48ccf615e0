// SPDX-License-Identifier: MIT
// zov exit: ends the controller with the default signal, by its pid file.
#pragma once

#include "cli/options.h"
#include "proto/session.h"

int exit_command(AcSession &session, const OptArgList &opts);
