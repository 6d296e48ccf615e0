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

static uint32_t filter_of(const OptArgList &opts)
{
    uint32_t filter = WTP_FILTER_ALL;
    for (const auto &row : LEFT_OUT)
        if (opts.given(row.option))
            filter &= ~row.bits;
    const bool managed = opts.given(OPT_MANAGED), unmanaged = opts.given(OPT_UNMANAGED);
    if (managed != unmanaged)
        filter &= ~uint32_t{managed ? WTP_FILTER_UNMANAGED : WTP_FILTER_MANAGED};
    return filter;
}

static int refuse_both(const OptArgList &opts, OptionCode one, OptionCode other)
{
    if (!opts.given(one) || !opts.given(other))
        return 0;
    return fail("ERROR: --%s cannot be specified with --%s.\n", option_name(one),
                option_name(other));
}

static void print_fw_results(WtpList &list)
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

static void print_wtp_list(WtpList &list, const OptArgList &opts)
{
    const bool password = opts.given(OPT_PASSWORD), basic = opts.given(OPT_BASIC);
    if (opts.given(OPT_FWRESULT))
        print_fw_results(list);
    else if (opts.given(OPT_JSON))
        print_wtp_json(list, password, basic);
    else if (opts.given(OPT_BREIF))
        print_wtp_brief(list);
    else
        print_wtp_details(list, password, basic);
}

static int wtps_command(AcSession &session, const OptArgList &opts)
{
    MacList macs;
    if (check_options(WTPS_COMMAND, opts,
                      [&](const OptArg &opt) {
                          if (opt.code == OPT_MAC && !parse_mac_list(opt.arg, macs))
                              return report_invalid_argument(opt);
                          return 0;
                      }) != 0 ||
        refuse_both(opts, OPT_JSON, OPT_BREIF) != 0 ||
        refuse_both(opts, OPT_BASIC, OPT_NO_CFG) != 0)
        return 1;

    WtpList list;
    if (fetch_wtp_list(session, list, filter_of(opts), macs) != 0)
        return 1;
    print_wtp_list(list, opts);
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
