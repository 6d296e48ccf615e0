// SPDX-License-Identifier: MIT
// zov initfw: sets the controller's firmware upgrading state.
#pragma once

#include "cli/options.h"
#include "proto/session.h"

int initfw_command(AcSession &session, const OptArgList &opts);
