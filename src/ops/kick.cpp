// SPDX-License-Identifier: MIT
//
//     request   1 command code 14
//               2 payload length
//               1 band
//               1 WLAN number
//               2 count of clients, 6 each
//               2 count N of devices, 6 each
//     reply     N result bytes
#include "ops/kick.h"

#include "cli/option_checks.h"
#include "ops/radio_band.h"
#include "proto/request_writer.h"
#include "proto/results.h"
#include "util/output.h"

#include <cstdlib>

static int kick_request(AcSession &session, const MacList &wtps, RadioBand band, int wlan,
                        const MacList &clients)
{
    RequestWriter request(session, COMMAND_KICK);
    request.length16(6 + 6 * (size_t{wtps.size()} + clients.size()));
    request.u8(static_cast<uint8_t>(band));
    request.u8(static_cast<uint8_t>(wlan));
    request.mac_list(clients);
    request.mac_list(wtps);
    if (request.finish() != 0)
        return 1;
    return read_device_results(session, wtps);
}

int kick_command(AcSession &session, const OptArgList &opts)
{
    MacOption wtps, clients;
    RadioBand band = BAND_UNSET;
    const char *wlan = nullptr;
    for (const OptArg &opt : opts)
        switch (opt.code) {
        case OPT_MAC:
            if (!wtps.take(opt))
                return 1;
            break;
        case OPT_CLIENT:
            if (!clients.take(opt))
                return 1;
            break;
        case OPT_RADIO:
            band = radio_band(opt.arg, BAND_5G1);
            break;
        case OPT_WLAN:
            wlan = opt.arg;
            if (*wlan < '0' || *wlan > '9')
                return fail("ERROR:  Invalid --%s argument '%s'.\n", option_name(OPT_WLAN), wlan);
            break;
        default:
            return unknown_option(opt);
        }
    if (!wtps.given())
        return require_option(OPT_MAC);
    if (band == BAND_UNSET)
        return require_option(OPT_RADIO);
    if (wlan == nullptr)
        return require_option(OPT_WLAN);
    if (!clients.given())
        return require_option(OPT_CLIENT);
    return kick_request(session, wtps.list(), band, atoi(wlan), clients.list());
}
