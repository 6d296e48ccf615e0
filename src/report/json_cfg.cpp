// SPDX-License-Identifier: MIT
// The configuration members of the JSON report.
#include "report/json_cfg_members.h"
#include "report/json_writer.h"

template void json_members::print_cfg_json(JsonWriter &, const WtpRecord &, bool);
