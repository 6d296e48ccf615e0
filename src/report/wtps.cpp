// SPDX-License-Identifier: MIT
// zov wtps: the devices that the controller knows.
#include "device/wtp_list.h"
#include "options/option_checks.h"
#include "report/json_report.h"
#include "report/text_report.h"
#include "util/output.h"

// What each option leaves out of the reply.
static constexpr struct {
    OptionCode option;
    uint32_t bits;
} LEFT_OUT[] = {
    {OPT_JOIN, WTP_FILTER_UNJOINED},
    {OPT_FWRESULT, WTP_FILTER_CFG | WTP_FILTER_DETAIL},
    {OPT_NO_CFG, WTP_FILTER_CFG},
    {OPT_BREIF, WTP_FILTER_CFG},
    {OPT_BASIC, WTP_FILTER_CFG | WTP_FILTER_DETAIL},
    {OPT_NO_STAINF, WTP_FILTER_STAINF},
};

namespace {

enum class Form { details, brief, json, upgrade_states };

// What the options ask for.
struct WtpsOptions {
    uint32_t filter = WTP_FILTER_ALL;
    MacList macs; // these devices; none: all
    Form form = Form::details;
    ReportParts parts;
};

} // namespace

static int refuse_both(const OptArgList &opts, OptionCode one, OptionCode other)
{
    if (!opts.given(one) || !opts.given(other))
        return 0;
    return fail("ERROR: --%s cannot be specified with --%s.\n", option_name(one),
                option_name(other));
}

static int read_options(const OptArgList &opts, WtpsOptions &wanted)
{
    if (check_options(WTPS_COMMAND, opts,
                      [&](const OptArg &opt) {
                          if (opt.code == OPT_MAC && !parse_mac_list(opt.arg, wanted.macs))
                              return report_invalid_argument(opt);
                          return 0;
                      }) != 0 ||
        refuse_both(opts, OPT_JSON, OPT_BREIF) != 0 ||
        refuse_both(opts, OPT_BASIC, OPT_NO_CFG) != 0)
        return 1;
    for (const auto &row : LEFT_OUT)
        if (opts.given(row.option))
            wanted.filter &= ~row.bits;
    const bool managed = opts.given(OPT_MANAGED), unmanaged = opts.given(OPT_UNMANAGED);
    if (managed != unmanaged)
        wanted.filter &= ~uint32_t{managed ? WTP_FILTER_UNMANAGED : WTP_FILTER_MANAGED};
    wanted.form = opts.given(OPT_FWRESULT) ? Form::upgrade_states
                  : opts.given(OPT_JSON)   ? Form::json
                  : opts.given(OPT_BREIF)  ? Form::brief
                                           : Form::details;
    wanted.parts = {opts.given(OPT_PASSWORD), opts.given(OPT_BASIC)};
    return 0;
}

static void print_upgrade_states(WtpList &list)
{
    Output &out = standard_output;
    for (const WtpRecord *wtp = first_wtp(list, WtpPart::basics); wtp != nullptr;
         wtp = next_wtp(list)) {
        out.put(mac_to_text(wtp->mac));
        out.put('=');
        out.put_number(wtp->upg_state);
        out.put('\n');
    }
}

static int wtps_command(AcSession &session, const OptArgList &opts)
{
    WtpsOptions wanted;
    WtpList list;
    if (read_options(opts, wanted) != 0 ||
        fetch_wtp_list(session, list, wanted.filter, wanted.macs) != 0)
        return 1;
    switch (wanted.form) {
    case Form::details:
        print_wtp_details(list, wanted.parts);
        break;
    case Form::brief:
        print_wtp_brief(list);
        break;
    case Form::json:
        print_wtp_json(list, wanted.parts);
        break;
    case Form::upgrade_states:
        print_upgrade_states(list);
        break;
    }
    return 0;
}

const CommandSpec WTPS_COMMAND = {
    wtps_command,
    "wtps",
    "Print WTP information",
    {"--json\t\t\tprint in json format", "--managed\t\tprint managed wtps only",
     "--unmanaged\t\tprint unmanaged wtps only", "--join\t\t\tprint joined wtps only",
     "--password\t\tprint password MD5", "--mac MAC\t\tprint the wtp specified by mac address list",
     "--fwresult\t\tprint the result of upgrading firmware", "--breif\t\t\tprint a breif list",
     "--no_cfg\t\tfilter out configuration", "--basic\t\t\tprint wtp's basic info",
     "--no_stainf\t\tfilter out station info"},
    {{OPT_MAC},
     {OPT_JSON},
     {OPT_MANAGED},
     {OPT_UNMANAGED},
     {OPT_JOIN},
     {OPT_PASSWORD},
     {OPT_FWRESULT},
     {OPT_NO_CFG},
     {OPT_BREIF},
     {OPT_BASIC},
     {OPT_NO_STAINF}},
};
