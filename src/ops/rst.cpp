// SPDX-License-Identifier: MIT
//
//     request   1 command code 6
//               2 payload length
//               1 factory: 1 to factory settings
//               1 flick reboot flag
//               4 seconds to wait before the reset
//               2 count N of devices
//             6*N devices
//     reply     N result bytes
#include "ops/rst.h"

#include "cli/option_checks.h"
#include "proto/request_writer.h"
#include "proto/results.h"

#include <cstdlib>

static int rst_request(AcSession &session, const MacList &wtps, bool factory, bool flick_reboot,
                       int wait)
{
    RequestWriter request(session, COMMAND_RESET);
    request.length16(8 + 6 * size_t{wtps.size()});
    request.u8(factory);
    request.u8(flick_reboot);
    request.u32(static_cast<uint32_t>(wait));
    request.mac_list(wtps);
    if (request.finish() != 0)
        return 1;
    return read_device_results(session, wtps);
}

int rst_command(AcSession &session, const OptArgList &opts)
{
    MacOption wtps;
    bool factory = false, flick_reboot = false;
    int wait = 0;
    for (const OptArg &opt : opts)
        switch (opt.code) {
        case OPT_MAC:
            if (!wtps.take(opt))
                return 1;
            break;
        case OPT_FACTORY:
            factory = true;
            break;
        case OPT_WAIT:
            wait = atoi(opt.arg);
            break;
        case OPT_FLICKREBOOT:
            flick_reboot = true;
            break;
        default:
            return unknown_option(opt);
        }
    if (!wtps.given())
        return require_option(OPT_MAC);
    return rst_request(session, wtps.list(), factory, flick_reboot, wait);
}
