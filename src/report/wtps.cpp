// SPDX-License-Identifier: MIT
#include "report/wtps.h"

#include "cli/option_checks.h"
#include "report/json_report.h"
#include "report/text_report.h"
#include "report/wtp_request.h"
#include "util/output.h"

namespace {

struct Choices {
    uint32_t filter = WTP_FILTER_ALL;
    MacList macs;
    bool managed = false, unmanaged = false, no_cfg = false;
    bool json = false, password = false, brief = false, basic = false, fwresult = false;

    void leave_out(uint32_t bits) { filter &= ~bits; }
};

} // namespace

static int read_options(const OptArgList &opts, Choices &choices)
{
    for (const OptArg &opt : opts)
        switch (opt.code) {
        case OPT_MAC:
            if (!parse_mac_list(opt.arg, choices.macs))
                return invalid_argument(opt);
            break;
        case OPT_JSON:
            choices.json = true;
            break;
        case OPT_MANAGED:
            choices.managed = true;
            break;
        case OPT_UNMANAGED:
            choices.unmanaged = true;
            break;
        case OPT_JOIN:
            choices.leave_out(WTP_FILTER_UNJOINED);
            break;
        case OPT_PASSWORD:
            choices.password = true;
            break;
        case OPT_FWRESULT:
            choices.fwresult = true;
            choices.leave_out(WTP_FILTER_CFG | WTP_FILTER_DETAIL);
            break;
        case OPT_NO_CFG:
            choices.no_cfg = true;
            choices.leave_out(WTP_FILTER_CFG);
            break;
        case OPT_BREIF:
            choices.brief = true;
            choices.leave_out(WTP_FILTER_CFG);
            break;
        case OPT_BASIC:
            choices.basic = true;
            choices.leave_out(WTP_FILTER_CFG | WTP_FILTER_DETAIL);
            break;
        case OPT_NO_STAINF:
            choices.leave_out(WTP_FILTER_STAINF);
            break;
        default:
            return unknown_option(opt);
        }
    return 0;
}

static int refuse_both(int one, int other)
{
    return fail("ERROR: --%s cannot be specified with --%s.\n", option_name(one),
                option_name(other));
}

static void print_fw_results(const WtpList &list)
{
    Output &out = standard_output;
    for (const WtpRecord *wtp = list.head; wtp != nullptr; wtp = wtp->next) {
        out.put(mac_to_text(wtp->mac));
        out.put('=');
        out.put_number(wtp->upg_state);
        out.put('\n');
    }
}

static void print_wtp_list(const WtpList &list, const Choices &choices)
{
    if (choices.fwresult)
        print_fw_results(list);
    else if (choices.json)
        print_wtp_json(list, choices.password, choices.basic);
    else if (choices.brief)
        print_wtp_brief(list);
    else
        print_wtp_details(list, choices.password, choices.basic);
}

int wtps_command(AcSession &session, const OptArgList &opts)
{
    Choices choices;
    if (read_options(opts, choices) != 0)
        return 1;
    if (choices.json && choices.brief)
        return refuse_both(OPT_JSON, OPT_BREIF);
    if (choices.basic && choices.no_cfg)
        return refuse_both(OPT_BASIC, OPT_NO_CFG);
    if (choices.managed != choices.unmanaged)
        choices.leave_out(choices.managed ? WTP_FILTER_UNMANAGED : WTP_FILTER_MANAGED);

    WtpList list;
    if (fetch_wtp_list(session, list, choices.filter, choices.macs) != 0)
        return 1;
    print_wtp_list(list, choices);
    return 0;
}
