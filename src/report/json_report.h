// SPDX-License-Identifier: MIT
// The JSON report of a device list.
#pragma once

#include "device/wtp_list.h"
#include "report/json_writer.h"

// Prints the one member "wtp_list":[...] and a line end, without enclosing braces. `basic` and
// `password` are those of print_wtp_details.
void print_wtp_json(WtpList &list, bool password, bool basic);

// The members of the configuration object of a record that has a configuration (json_cfg.cpp).
void print_cfg_json(JsonWriter &json, const WtpRecord &wtp, bool password);
