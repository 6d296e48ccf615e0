// SPDX-License-Identifier: MIT
// A part of the answer about newer firmware that other programs read as well.
#pragma once

#include "proto/reply_reader.h"
#include "util/mac.h"

// Reads one of the answer's two lists: that of one step comes first.
void read_fwlist(ReplyReader &reply, MacList &macs);
