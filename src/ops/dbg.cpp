// SPDX-License-Identifier: MIT
//
//     request   1 command code 15
//               4 enable: 0 or 1
//               4 1 for devices, 0 for the controller
//               6 the device, zero for all
//     reply     none
#include "ops/dbg.h"

#include "cli/option_checks.h"
#include "proto/request_writer.h"

#include <cstdlib>

static int dbg_request(AcSession &session, bool enable, bool wtp, const Mac &mac)
{
    RequestWriter request(session, COMMAND_DEBUG);
    request.u32(enable);
    request.u32(wtp);
    request.mac(mac);
    return request.finish();
}

int dbg_command(AcSession &session, const OptArgList &opts)
{
    const char *enable = nullptr;
    bool wtp = false;
    Mac mac;
    for (const OptArg &opt : opts)
        switch (opt.code) {
        case OPT_ENABLE:
            enable = opt.arg;
            break;
        case OPT_WTP:
            wtp = true;
            break;
        case OPT_MAC:
            if (!parse_mac(opt.arg, mac) || mac.is_group())
                return invalid_argument(opt);
            break;
        default:
            return unknown_option(opt);
        }
    if (enable == nullptr)
        return require_option(OPT_ENABLE);
    return dbg_request(session, atoi(enable) != 0, wtp, mac);
}
