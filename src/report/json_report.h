// SPDX-License-Identifier: MIT
// The JSON report of a device list.
#pragma once

#include "device/wtp_list.h"
#include "report/format.h"

// Prints the one member "wtp_list":[...] and a line end, without enclosing braces.
void print_wtp_json(WtpList &list, ReportParts parts);
