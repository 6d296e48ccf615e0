// SPDX-License-Identifier: MIT
// Requests about upgrades that other programs send as well. Their layouts are at the heads of
// upg.cpp and fwlist.cpp.
#pragma once

#include "proto/reply_reader.h"
#include "proto/session.h"
#include "util/mac.h"

// Sends the request to upgrade; one result byte for each device comes back. Returns 0, or 1 when it
// cannot be sent.
int send_upg_request(AcSession &session, const MacList &wtps, uint32_t period, uint32_t type);

// Sends the request for the devices that can upgrade; one result byte for each device comes back,
// and two lists behind them. Returns 0, or 1 when it cannot be sent.
int send_fwlist_request(AcSession &session, const MacList &wtps);

// Reads one of the two lists; those of one step come first.
void read_fwlist(ReplyReader &reply, MacList &macs);
