// SPDX-License-Identifier: MIT
// zov rst: resets devices.
//
//     reply     N result bytes
#include "options/option_checks.h"
#include "proto/results.h"

static int rst_command(AcSession &session, const OptArgList &opts)
{
    MacOption wtps(OPT_MAC);
    if (check_options(RST_COMMAND, opts, [&](const OptArg &opt) { return wtps.take(opt); }) != 0)
        return 1;
    if (!wtps.given())
        return report_missing_option(OPT_MAC);
    return request_device_results(
        session, ResetRequest{opts.given(OPT_FACTORY), opts.given(OPT_FLICKREBOOT),
                              static_cast<uint32_t>(opts.number(OPT_WAIT)), wtps.list()});
}

const CommandSpec RST_COMMAND = {
    rst_command,
    "rst",
    "Reset WTP",
    {"--mac MAC\t\tthe wtp's mac address list", "--factory\t\treset to factory settings",
     "--wait SEC\t\thow many seconds to wait before reset"},
    {{OPT_MAC}, {OPT_FACTORY}, {OPT_WAIT}, {OPT_FLICKREBOOT}},
};
