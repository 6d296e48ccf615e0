// SPDX-License-Identifier: MIT
// zov rst: resets devices.
//
//     request   1 command code 6
//               2 payload length
//               1 factory: 1 to factory settings
//               1 flick reboot flag
//               4 seconds to wait before the reset
//               2 count N of devices
//             6*N devices
//     reply     N result bytes
#include "options/option_checks.h"
#include "proto/request_writer.h"
#include "proto/results.h"

extern const CommandSpec RST_ROW;

static int rst_request(AcSession &session, const MacList &wtps, bool factory, bool flick_reboot,
                       int wait)
{
    RequestWriter request(session, COMMAND_RESET);
    request.begin_length();
    request.u8(factory);
    request.u8(flick_reboot);
    request.u32(static_cast<uint32_t>(wait));
    request.mac_list(wtps);
    request.end_length();
    if (request.finish() != 0)
        return 1;
    return read_device_results(session, wtps);
}

static int rst_command(AcSession &session, const OptArgList &opts)
{
    MacOption wtps(OPT_MAC);
    if (check_options(RST_ROW, opts, [&](const OptArg &opt) { return wtps.take(opt); }) != 0)
        return 1;
    if (!wtps.given())
        return report_missing_option(OPT_MAC);
    return rst_request(session, wtps.list(), opts.given(OPT_FACTORY), opts.given(OPT_FLICKREBOOT),
                       opts.number(OPT_WAIT));
}

const CommandSpec RST_ROW = {
    rst_command,
    "rst",
    "Reset WTP",
    {"--mac MAC\t\tthe wtp's mac address list", "--factory\t\treset to factory settings",
     "--wait SEC\t\thow many seconds to wait before reset"},
    {{OPT_MAC}, {OPT_FACTORY}, {OPT_WAIT}, {OPT_FLICKREBOOT}},
};
