// SPDX-License-Identifier: MIT
// zov ac: the controller's summary.
//
//     reply     2 length L
//               L version text
//               4 max_wtps, 4 managed_wtps, 4 active_wtps, 4 total_sta, 4 upg_wtps,
//               4 redundant_mode
#include "options/option_checks.h"
#include "proto/reply_reader.h"
#include "proto/request_writer.h"
#include "report/json_writer.h"
#include "report/text_writer.h"
#include "util/text.h"

namespace {

struct AcInfo {
    Text cw_ver; // the CAPWAP version
    uint32_t max_wtps = 0;
    uint32_t managed_wtps = 0;
    uint32_t active_wtps = 0;
    uint32_t total_sta = 0;
    uint32_t upg_wtps = 0;
    uint32_t redundant_mode = 0;
};

} // namespace

static int fetch_ac_info(AcSession &session, AcInfo &info)
{
    if (send_request(session, AcInfoRequest()) != 0)
        return 1;
    ReplyReader reply(session);
    reply.read(info.cw_ver);
    reply.read(info.max_wtps);
    reply.read(info.managed_wtps);
    reply.read(info.active_wtps);
    reply.read(info.total_sta);
    reply.read(info.upg_wtps);
    reply.read(info.redundant_mode);
    return reply.ok() ? 0 : 1;
}

// The redundancy mode stands before the upgrading devices in both forms, unlike on the wire.
static void print_ac_info(const AcInfo &info, bool as_json)
{
    if (as_json) {
        JsonWriter json(standard_output);
        json.object("ac_info");
        json.member("cw_ver", info.cw_ver.c_str());
        json.member("max_wtps", info.max_wtps);
        json.member("managed_wtps", info.managed_wtps);
        json.member("active_wtps", info.active_wtps);
        json.member("total_sta", info.total_sta);
        json.member("redundant_mode", info.redundant_mode);
        json.member("upg_wtps", info.upg_wtps);
        json.end_object();
        return;
    }
    TextWriter out(standard_output);
    out.item("Capwap Ver\t", info.cw_ver.c_str());
    out.put("\n");
    out.line("Max WTPs\t", info.max_wtps);
    out.line("Managed WTPs\t", info.managed_wtps);
    out.line("Active WTPs\t", info.active_wtps);
    out.line("Total Stations\t", info.total_sta);
    out.line("Redundant Mode\t", info.redundant_mode);
    out.line("Upgrading WTPs\t", info.upg_wtps);
}

static int ac_command(AcSession &session, const OptArgList &opts)
{
    if (check_options(AC_COMMAND, opts) != 0)
        return 1;
    AcInfo info;
    if (fetch_ac_info(session, info) != 0)
        return 1;
    print_ac_info(info, opts.given(OPT_JSON));
    return 0;
}

const CommandSpec AC_COMMAND = {
    ac_command, "ac", "Print AC information", {"--json\t\t\tprint in json format"}, {{OPT_JSON}},
};
