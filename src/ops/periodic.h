// SPDX-License-Identifier: MIT
// zov bgscan, autoch, autotp: a function that the controller repeats on all devices of a band.
#pragma once

#include "cli/options.h"
#include "proto/session.h"

int bgscan_command(AcSession &session, const OptArgList &opts);
int autoch_command(AcSession &session, const OptArgList &opts);
int autotp_command(AcSession &session, const OptArgList &opts);
