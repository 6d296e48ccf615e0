// SPDX-License-Identifier: MIT
#include "report/json_report.h"

#include "report/json_members.h"
#include "report/json_writer.h"

// They are made in a file of their own, json_cfg.cpp.
extern template void json_members::print_cfg_json(JsonWriter &, const WtpRecord &, bool);

void print_wtp_json(WtpList &list, ReportParts parts)
{
    JsonWriter json(standard_output);
    json.array("wtp_list");
    for (const WtpRecord *wtp = first_wtp(list, WtpPart::whole); wtp != nullptr;
         wtp = next_wtp(list))
        json_members::print_wtp(json, *wtp, parts);
    json.end_array();
    standard_output.put('\n');
}
