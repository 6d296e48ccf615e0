// SPDX-License-Identifier: MIT
// zov dbg: debug logging, of the controller or of devices.
//
//     request   1 command code 15
//               4 enable: 0 or 1
//               4 1 for devices, 0 for the controller
//               6 the device, zero for all
//     reply     none
#include "options/option_checks.h"
#include "proto/request_writer.h"

extern const CommandSpec DBG_ROW;

static int dbg_request(AcSession &session, bool enable, bool wtp, const Mac &mac)
{
    RequestWriter request(session, COMMAND_DEBUG);
    request.u32(enable);
    request.u32(wtp);
    request.mac(mac);
    return request.finish();
}

static int dbg_command(AcSession &session, const OptArgList &opts)
{
    Mac mac;
    if (check_options(DBG_ROW, opts, [&](const OptArg &opt) {
            if (opt.code == OPT_MAC && (!parse_mac(opt.arg, mac) || mac.is_group()))
                return report_invalid_argument(opt);
            return 0;
        }) != 0)
        return 1;
    if (!opts.given(OPT_ENABLE))
        return report_missing_option(OPT_ENABLE);
    return dbg_request(session, opts.number(OPT_ENABLE) != 0, opts.given(OPT_WTP), mac);
}

const CommandSpec DBG_ROW = {
    dbg_command,
    "dbg",
    "Enable/Disable Debug Log",
    {"--enable 0/1\t\tenable or not", "--wtp\t\t\tset wtp debug log",
     "--mac MAC\t\t\tthe wtp's MAC to be set"},
    {{OPT_ENABLE, "0 1"}, {OPT_WTP}, {OPT_MAC}},
};
