// SPDX-License-Identifier: MIT
// zov wtpflag: firmware upgrades in progress.
#include "device/wtp_list.h"
#include "options/option_checks.h"
#include "report/text_writer.h"

enum : uint32_t {
    FLAG_FILTER = WTP_FILTER_MANAGED | WTP_FILTER_UNMANAGED | WTP_FILTER_UNJOINED | WTP_FILTER_CFG,
};

static void print_upgrade_counts(WtpList &list)
{
    uint32_t all = 0, waiting = 0, offline = 0;
    for (const WtpRecord *wtp = first_wtp(list, WtpPart::basics); wtp != nullptr;
         wtp = next_wtp(list)) {
        if (wtp->upg_img == 0)
            continue;
        all++;
        if (wtp->sub_state == WTP_SUB_WAITING)
            waiting++;
        if (wtp->state == WTP_OFFLINE && wtp->sub_state == 0)
            offline++;
    }
    TextWriter out(standard_output);
    out.line("Waiting WTPs=", waiting);
    out.line("All WTPs=", all);
    out.line("Offline WTPs=", offline);
}

static void print_upgrading_count(WtpList &list)
{
    uint32_t count = 0;
    for (const WtpRecord *wtp = first_wtp(list, WtpPart::basics); wtp != nullptr;
         wtp = next_wtp(list))
        count += is_upgrading(*wtp);
    TextWriter(standard_output).line("", count);
}

static int wtpflag_command(AcSession &session, const OptArgList &opts)
{
    MacList macs;
    if (check_options(WTPFLAG_COMMAND, opts, [&](const OptArg &opt) {
            if (opt.code == OPT_MAC && !parse_mac_list(opt.arg, macs))
                return report_invalid_argument(opt);
            return 0;
        }) != 0)
        return 1;

    WtpList list;
    if (fetch_wtp_list(session, list, FLAG_FILTER, macs) != 0)
        return 1;
    switch (const int flag = opts.number(OPT_FLAG); flag) {
    case 1:
        print_upgrade_counts(list);
        return 0;
    case 2:
        print_upgrading_count(list);
        return 0;
    default:
        return fail("ERROR: Unknown flag %d.\n", flag);
    }
}

const CommandSpec WTPFLAG_COMMAND = {
    wtpflag_command,
    "wtpflag",
    "Show filter WTPs",
    {"--mac MAC\t\tthe wtp's mac address list",
     "--flag\t\t\tlist Display the WTP information according to the following flag:",
     "\t\t\t1: show 2step upgrading AP infomation according to mac list",
     "\t\t\t2: show number of upgrading AP according to mac list"},
    {{OPT_MAC}, {OPT_FLAG, "1 2"}},
};
