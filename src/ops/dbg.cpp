// SPDX-License-Identifier: MIT
// zov dbg: debug logging, of the controller or of devices.
//
//     reply     none
#include "options/option_checks.h"
#include "proto/request_writer.h"

static int dbg_command(AcSession &session, const OptArgList &opts)
{
    Mac mac;
    if (check_options(DBG_COMMAND, opts, [&](const OptArg &opt) {
            if (opt.code == OPT_MAC && (!parse_mac(opt.arg, mac) || mac.is_group()))
                return report_invalid_argument(opt);
            return 0;
        }) != 0)
        return 1;
    if (!opts.given(OPT_ENABLE))
        return report_missing_option(OPT_ENABLE);
    return send_request(session,
                        DebugRequest{opts.number(OPT_ENABLE) != 0, opts.given(OPT_WTP), mac});
}

const CommandSpec DBG_COMMAND = {
    dbg_command,
    "dbg",
    "Enable/Disable Debug Log",
    {"--enable 0/1\t\tenable or not", "--wtp\t\t\tset wtp debug log",
     "--mac MAC\t\t\tthe wtp's MAC to be set"},
    {{OPT_ENABLE, "0 1"}, {OPT_WTP}, {OPT_MAC}},
};
