// SPDX-License-Identifier: MIT
//
//     request   1 command code 17
//               2 payload length
//               2 count N of devices
//             6*N devices
//               1 length L
//               L address or host name
//     reply     N result bytes
#include "ops/cac.h"

#include "cli/option_checks.h"
#include "proto/request_writer.h"
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

static int cac_request(AcSession &session, const MacList &wtps, const char *address)
{
    const size_t length = strlen(address);
    RequestWriter request(session, COMMAND_REDIRECT);
    request.length16(3 + 6 * size_t{wtps.size()} + length);
    request.mac_list(wtps);
    request.u8(static_cast<uint8_t>(length));
    request.bytes(address, length);
    if (request.finish() != 0)
        return 1;
    return read_device_results(session, wtps);
}

int cac_command(AcSession &session, const OptArgList &opts)
{
    MacOption wtps;
    const char *address = nullptr;
    for (const OptArg &opt : opts)
        switch (opt.code) {
        case OPT_MAC:
            if (!wtps.take(opt))
                return 1;
            break;
        case OPT_IP:
            if (address != nullptr)
                return repeated_option(opt);
            if (check_address(opt.arg) != 0)
                return 1;
            address = opt.arg;
            break;
        default:
            return unknown_option(opt);
        }
    if (!wtps.given())
        return require_option(OPT_MAC);
    if (address == nullptr)
        return require_option(OPT_IP);
    return cac_request(session, wtps.list(), address);
}
