// SPDX-License-Identifier: MIT
// zov upg: starts a firmware upgrade of devices.
//
//     reply     N result bytes
#include "options/option_checks.h"
#include "proto/results.h"

#include <cstdlib>

static int upg_command(AcSession &session, const OptArgList &opts)
{
    MacOption wtps(OPT_MAC);
    if (check_options(UPG_COMMAND, opts, [&](const OptArg &opt) {
            if (opt.code == OPT_TYPE && atoi(opt.arg) > 2)
                return report_invalid_argument(opt);
            return wtps.take(opt);
        }) != 0)
        return 1;
    if (!wtps.given())
        return report_missing_option(OPT_MAC);
    return request_device_results(
        session, UpgradeRequest{wtps.list(), static_cast<uint32_t>(opts.number(OPT_PERIOD)),
                                static_cast<uint32_t>(opts.number(OPT_TYPE))});
}

const CommandSpec UPG_COMMAND = {
    upg_command,
    "upg",
    "Upgrade WTP image",
    {"--mac MAC\t\tthe wtp's mac address list",
     "--period SEC\t\toffline timeout value for upgrading"},
    {{OPT_MAC}, {OPT_PERIOD}, {OPT_TYPE, "0 1 2"}},
};
