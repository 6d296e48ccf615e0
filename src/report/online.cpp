// SPDX-License-Identifier: MIT
#include "report/online.h"

#include "cli/option_checks.h"
#include "report/text_writer.h"
#include "report/wtp_request.h"

enum : uint32_t {
    ONLINE_FILTER = WTP_FILTER_MANAGED | WTP_FILTER_UNMANAGED | WTP_FILTER_UNJOINED,
};

int online_command(AcSession &session, const OptArgList &opts)
{
    if (opts.count > 0)
        return unknown_option(opts.rows[0]);
    WtpList list;
    if (fetch_wtp_list(session, list, ONLINE_FILTER, MacList()) != 0)
        return 1;

    uint32_t total = 0, online = 0;
    for (const WtpRecord *wtp = list.head; wtp != nullptr; wtp = wtp->next) {
        total++;
        if (wtp->state == WTP_ONLINE)
            online++;
    }
    TextWriter out(standard_output);
    out.item("online WTP: ", online);
    out.line("/", total);
    return 0;
}
