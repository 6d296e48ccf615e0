// SPDX-License-Identifier: MIT
// The JSON report of a device list.
#pragma once

#include "device/wtp_list.h"

// Prints the one member "wtp_list":[...] and a line end, without enclosing braces. `basic` and
// `password` are those of print_wtp_details.
void print_wtp_json(WtpList &list, bool password, bool basic);
