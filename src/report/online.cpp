// SPDX-License-Identifier: MIT
// zov online: how many devices are online.
#include "device/wtp_list.h"
#include "options/option_checks.h"
#include "report/text_writer.h"

enum : uint32_t {
    ONLINE_FILTER = WTP_FILTER_MANAGED | WTP_FILTER_UNMANAGED | WTP_FILTER_UNJOINED,
};

static int online_command(AcSession &session, const OptArgList &opts)
{
    if (check_options(ONLINE_COMMAND, opts) != 0)
        return 1;
    WtpList list;
    if (fetch_wtp_list(session, list, ONLINE_FILTER, MacList()) != 0)
        return 1;

    uint32_t total = 0, online = 0;
    for (const WtpRecord *wtp = first_wtp(list, WtpPart::basics); wtp != nullptr;
         wtp = next_wtp(list)) {
        total++;
        if (wtp->state == WTP_ONLINE)
            online++;
    }
    TextWriter out(standard_output);
    out.item("online WTP: ", online);
    out.line("/", total);
    return 0;
}

const CommandSpec ONLINE_COMMAND = {
    online_command, "online", "Show the number of online wtps", {}, {},
};
