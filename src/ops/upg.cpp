// SPDX-License-Identifier: MIT
// zov upg: starts a firmware upgrade of devices.
//
//     request   1 command code 2
//               2 payload length
//               2 count N of devices
//               4 period in seconds
//               4 type
//             6*N devices
//     reply     N result bytes
#include "ops/upgrade_requests.h"
#include "options/option_checks.h"
#include "proto/request_writer.h"
#include "proto/results.h"

#include <cstdlib>

extern const CommandSpec UPG_ROW;

int send_upg_request(AcSession &session, const MacList &wtps, uint32_t period, uint32_t type)
{
    RequestWriter request(session, COMMAND_UPGRADE);
    request.begin_length();
    request.mac_count(wtps);
    request.u32(period);
    request.u32(type);
    for (const Mac &mac : wtps)
        request.mac(mac);
    request.end_length();
    return request.finish();
}

static int upg_command(AcSession &session, const OptArgList &opts)
{
    MacOption wtps(OPT_MAC);
    if (check_options(UPG_ROW, opts, [&](const OptArg &opt) {
            if (opt.code == OPT_TYPE && atoi(opt.arg) > 2)
                return report_invalid_argument(opt);
            return wtps.take(opt);
        }) != 0)
        return 1;
    if (!wtps.given())
        return report_missing_option(OPT_MAC);
    if (send_upg_request(session, wtps.list(), static_cast<uint32_t>(opts.number(OPT_PERIOD)),
                         static_cast<uint32_t>(opts.number(OPT_TYPE))) != 0)
        return 1;
    return read_device_results(session, wtps.list());
}

const CommandSpec UPG_ROW = {
    upg_command,
    "upg",
    "Upgrade WTP image",
    {"--mac MAC\t\tthe wtp's mac address list",
     "--period SEC\t\toffline timeout value for upgrading"},
    {{OPT_MAC}, {OPT_PERIOD}, {OPT_TYPE, "0 1 2"}},
};
