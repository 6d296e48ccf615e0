// SPDX-License-Identifier: MIT
// The text reports of a device list.
#pragma once

#include "device/wtp_list.h"
#include "report/text_writer.h"

// One line a device under a column header.
void print_wtp_brief(WtpList &list);

// Every field the controller returned.
void print_wtp_details(WtpList &list, ReportParts parts);

// The configuration lines of one record that has a configuration (text_cfg.cpp).
void print_cfg_text(TextWriter &out, const WtpRecord &wtp, bool password);
