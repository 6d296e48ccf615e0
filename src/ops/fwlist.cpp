// SPDX-License-Identifier: MIT
//
//     request   1 command code 19
//               2 payload length
//               2 count N of devices
//             6*N devices
//     reply     N result bytes
//               2 count of devices that upgrade in one step, 6 each
//               2 count of devices that upgrade in two steps, 6 each
#include "ops/fwlist.h"

#include "cli/option_checks.h"
#include "proto/reply_reader.h"
#include "proto/request_writer.h"
#include "proto/result_code.h"
#include "util/output.h"

static void read_macs(ReplyReader &reply, MacList &macs)
{
    const auto count = reply.number<uint16_t>();
    if (count == 0)
        return;
    if (!macs.reserve(count)) {
        fail("ERROR: Out of memory\n");
        reply.set_failed();
    }
    for (uint16_t i = 0; i < count && reply.ok(); i++)
        reply.read(macs.append());
}

static int fwlist_request(AcSession &session, const MacList &wtps, MacList &one_step,
                          MacList &two_step)
{
    RequestWriter request(session, COMMAND_FIRMWARE_LIST);
    request.length16(6 * size_t{wtps.size()} + 2);
    request.mac_list(wtps);
    if (request.finish() != 0)
        return 1;

    ReplyReader reply(session);
    for (const Mac &mac : wtps)
        print_result_code(reply.number<uint8_t>(), mac);
    read_macs(reply, one_step);
    read_macs(reply, two_step);
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

int fwlist_command(AcSession &session, const OptArgList &opts)
{
    MacOption wtps;
    for (const OptArg &opt : opts) {
        if (opt.code != OPT_MAC)
            return unknown_option(opt);
        if (!wtps.take(opt))
            return 1;
    }
    if (!wtps.given())
        return require_option(OPT_MAC);

    MacList one_step, two_step;
    if (fwlist_request(session, wtps.list(), one_step, two_step) != 0)
        return 1;
    print_macs("one step=", one_step);
    print_macs("two step=", two_step);
    return 0;
}
