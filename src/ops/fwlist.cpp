// SPDX-License-Identifier: MIT
// zov fwlist: the devices that upgrade in one step, and those that upgrade in two.
//
//     reply     N result bytes
//               2 count of devices that upgrade in one step, 6 each
//               2 count of devices that upgrade in two steps, 6 each
#include "ops/fwlist.h"
#include "options/option_checks.h"
#include "proto/request_writer.h"
#include "proto/result_code.h"
#include "util/output.h"

void read_fwlist(ReplyReader &reply, MacList &macs)
{
    const auto count = reply.number<uint16_t>();
    if (count == 0)
        return;
    if (!macs.reserve(count))
        reply.report_no_memory();
    for (uint16_t i = 0; i < count && reply.ok(); i++)
        reply.read(macs.append());
}

static int fwlist_request(AcSession &session, const MacList &wtps, MacList &one_step,
                          MacList &two_step)
{
    if (send_request(session, FirmwareListRequest{wtps}) != 0)
        return 1;
    ReplyReader reply(session);
    for (const Mac &mac : wtps)
        print_result_code(reply.number<uint8_t>(), mac, session.messages);
    read_fwlist(reply, one_step);
    read_fwlist(reply, two_step);
    return reply.ok() ? 0 : 1;
}

// An empty list prints nothing, and nothing prints a line end.
static void print_macs(const char *label, const MacList &macs)
{
    for (const Mac &mac : macs) {
        standard_output.put(&mac == macs.begin() ? label : ",");
        standard_output.put(mac_to_text(mac));
    }
}

static int fwlist_command(AcSession &session, const OptArgList &opts)
{
    MacOption wtps(OPT_MAC);
    if (check_options(FWLIST_COMMAND, opts, [&](const OptArg &opt) { return wtps.take(opt); }) != 0)
        return 1;
    if (!wtps.given())
        return report_missing_option(OPT_MAC);

    MacList one_step, two_step;
    if (fwlist_request(session, wtps.list(), one_step, two_step) != 0)
        return 1;
    print_macs("one step=", one_step);
    print_macs("two step=", two_step);
    return 0;
}

const CommandSpec FWLIST_COMMAND = {
    fwlist_command,
    "fwlist",
    "Show firmware upgrade list",
    {"--mac MAC\t\tthe wtp's mac address list"},
    {{OPT_MAC}},
};
