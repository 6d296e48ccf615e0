// SPDX-License-Identifier: MIT
//
//     request   1 command code 10
//               2 payload length
//               1 band
//               2 count N of devices
//             6*N devices
//     reply     N result bytes
#include "ops/scan.h"

#include "cli/option_checks.h"
#include "ops/radio_band.h"
#include "proto/request_writer.h"
#include "proto/results.h"

static int scan_request(AcSession &session, const MacList &wtps, RadioBand band)
{
    RequestWriter request(session, COMMAND_SCAN);
    request.length16(3 + 6 * size_t{wtps.size()});
    request.u8(static_cast<uint8_t>(band));
    request.mac_list(wtps);
    if (request.finish() != 0)
        return 1;
    return read_device_results(session, wtps);
}

int scan_command(AcSession &session, const OptArgList &opts)
{
    MacOption wtps;
    RadioBand band = BAND_UNSET;
    for (const OptArg &opt : opts)
        switch (opt.code) {
        case OPT_MAC:
            if (!wtps.take(opt))
                return 1;
            break;
        case OPT_RADIO:
            band = radio_band(opt.arg, BAND_5G);
            break;
        default:
            return unknown_option(opt);
        }
    if (!wtps.given())
        return require_option(OPT_MAC);
    if (band == BAND_UNSET)
        return require_option(OPT_RADIO);
    return scan_request(session, wtps.list(), band);
}
