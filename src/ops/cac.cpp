// SPDX-License-Identifier: MIT
// zov cac: sends devices to another controller.
//
//     reply     N result bytes
#include "options/option_checks.h"
#include "proto/results.h"
#include "util/ipv4.h"
#include "util/output.h"

#include <cstring>

// Text that starts with a digit must be an IPv4 address; all other text is taken as a host name.
static int check_address(const char *text)
{
    if (strlen(text) > UINT8_MAX)
        return fail("ERROR: Invalid addr value '%s'.\n", text);
    Ipv4 unused;
    if (*text >= '0' && *text <= '9' && !parse_ipv4(text, unused))
        return fail("ERROR: Invalid ip value '%s'.\n", text);
    return 0;
}

static int cac_command(AcSession &session, const OptArgList &opts)
{
    MacOption wtps(OPT_MAC);
    const char *address = nullptr;
    if (check_options(CAC_COMMAND, opts, [&](const OptArg &opt) {
            if (opt.code != OPT_IP)
                return wtps.take(opt);
            if (address != nullptr)
                return report_repeated_option(opt);
            address = opt.arg;
            return check_address(address);
        }) != 0)
        return 1;
    if (!wtps.given())
        return report_missing_option(OPT_MAC);
    if (address == nullptr)
        return report_missing_option(OPT_IP);
    return request_device_results(session, RedirectRequest{wtps.list(), {address}});
}

const CommandSpec CAC_COMMAND = {
    cac_command,
    "cac",
    "Let WTP connect to specific AC",
    {"--mac MAC\t\tthe wtp's mac address list", "--ip ADDR\t\tAC IP address or host name"},
    {{OPT_MAC}, {OPT_IP}},
};
