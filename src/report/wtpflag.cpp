// SPDX-License-Identifier: MIT
#include "report/wtpflag.h"

#include "cli/option_checks.h"
#include "report/text_writer.h"
#include "report/wtp_request.h"

#include <cstdlib>

enum : uint32_t {
    FLAG_FILTER = WTP_FILTER_MANAGED | WTP_FILTER_UNMANAGED | WTP_FILTER_UNJOINED | WTP_FILTER_CFG,
};

static void print_upgrade_counts(const WtpList &list)
{
    uint32_t all = 0, waiting = 0, offline = 0;
    for (const WtpRecord *wtp = list.head; wtp != nullptr; wtp = wtp->next) {
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

static void print_upgrading_count(const WtpList &list)
{
    uint32_t count = 0;
    for (const WtpRecord *wtp = list.head; wtp != nullptr; wtp = wtp->next)
        if (wtp->sub_state == WTP_SUB_UPGRADING || wtp->upg_img != 0)
            count++;
    TextWriter(standard_output).line("", count);
}

int wtpflag_command(AcSession &session, const OptArgList &opts)
{
    MacList macs;
    int flag = 0;
    for (const OptArg &opt : opts)
        switch (opt.code) {
        case OPT_MAC:
            if (!parse_mac_list(opt.arg, macs))
                return invalid_argument(opt);
            break;
        case OPT_FLAG:
            flag = atoi(opt.arg);
            break;
        default:
            return unknown_option(opt);
        }

    WtpList list;
    if (fetch_wtp_list(session, list, FLAG_FILTER, macs) != 0)
        return 1;
    switch (flag) {
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
