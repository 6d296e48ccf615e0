// SPDX-License-Identifier: MIT
// zov cac: sends devices to another controller.
//
//     request   1 command code 17
//               2 payload length
//               2 count N of devices
//             6*N devices
//               1 length L
//               L address or host name
//     reply     N result bytes
#include "options/option_checks.h"
#include "proto/request_writer.h"
#include "proto/results.h"
#include "util/ipv4.h"
#include "util/output.h"

#include <cstring>

extern const CommandSpec CAC_ROW;

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

static int cac_request(AcSession &session, const MacList &wtps, const char *address)
{
    const size_t length = strlen(address);
    RequestWriter request(session, COMMAND_REDIRECT);
    request.begin_length();
    request.mac_list(wtps);
    request.u8(static_cast<uint8_t>(length));
    request.bytes(address, length);
    request.end_length();
    if (request.finish() != 0)
        return 1;
    return read_device_results(session, wtps);
}

static int cac_command(AcSession &session, const OptArgList &opts)
{
    MacOption wtps(OPT_MAC);
    const char *address = nullptr;
    if (check_options(CAC_ROW, opts, [&](const OptArg &opt) {
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
    return cac_request(session, wtps.list(), address);
}

const CommandSpec CAC_ROW = {
    cac_command,
    "cac",
    "Let WTP connect to specific AC",
    {"--mac MAC\t\tthe wtp's mac address list", "--ip ADDR\t\tAC IP address or host name"},
    {{OPT_MAC}, {OPT_IP}},
};
