// SPDX-License-Identifier: MIT
//
//     request   1 command code 2
//               2 payload length
//               2 count N of devices
//               4 period in seconds
//               4 type
//             6*N devices
//     reply     N result bytes
#include "ops/upg.h"

#include "cli/option_checks.h"
#include "proto/request_writer.h"
#include "proto/results.h"

#include <cstdlib>

static int upg_request(AcSession &session, const MacList &wtps, int period, int type)
{
    RequestWriter request(session, COMMAND_UPGRADE);
    request.length16(10 + 6 * size_t{wtps.size()});
    request.count16(wtps.size());
    request.u32(static_cast<uint32_t>(period));
    request.u32(static_cast<uint32_t>(type));
    for (const Mac &mac : wtps)
        request.mac(mac);
    if (request.finish() != 0)
        return 1;
    return read_device_results(session, wtps);
}

int upg_command(AcSession &session, const OptArgList &opts)
{
    MacOption wtps;
    int period = 0, type = 0;
    for (const OptArg &opt : opts)
        switch (opt.code) {
        case OPT_MAC:
            if (!wtps.take(opt))
                return 1;
            break;
        case OPT_PERIOD:
            period = atoi(opt.arg);
            break;
        case OPT_TYPE:
            type = atoi(opt.arg);
            if (type > 2)
                return invalid_argument(opt);
            break;
        default:
            return unknown_option(opt);
        }
    if (!wtps.given())
        return require_option(OPT_MAC);
    return upg_request(session, wtps.list(), period, type);
}
