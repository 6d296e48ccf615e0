// SPDX-License-Identifier: MIT
//
//     request   1 command code 11 (bgscan), 12 (autoch) or 13 (autotp)
//               2 payload length
//               4 band
//               1 enable
//               4 period in seconds
//     reply     counted results for bgscan, none for the others
#include "ops/periodic.h"

#include "cli/option_checks.h"
#include "ops/radio_band.h"
#include "proto/request_writer.h"
#include "proto/results.h"
#include "util/output.h"

#include <cstdlib>
#include <cstring>

static int periodic_request(AcSession &session, CommandCode code, RadioBand band, bool enable,
                            int period)
{
    RequestWriter request(session, code);
    request.length16(9);
    request.u32(static_cast<uint32_t>(band));
    request.u8(enable);
    request.u32(static_cast<uint32_t>(period));
    return request.finish();
}

// Unlike elsewhere the message does not quote the argument, which may be missing.
static int invalid(int code)
{
    return fail("ERROR: Invalid --%s argument.\n", option_name(code));
}

static int periodic_command(AcSession &session, const OptArgList &opts, CommandCode code,
                            RadioBand last_band)
{
    RadioBand band = BAND_UNSET;
    const char *enable = nullptr;
    int period = 0;
    for (const OptArg &opt : opts)
        switch (opt.code) {
        case OPT_RADIO:
            band = radio_band(opt.arg, last_band);
            break;
        case OPT_ENABLE:
            enable = opt.arg;
            if (strcmp(enable, "0") != 0 && strcmp(enable, "1") != 0)
                return invalid(OPT_ENABLE);
            break;
        case OPT_PERIOD:
            period = atoi(opt.arg);
            break;
        default:
            return unknown_option(opt);
        }
    if (band == BAND_UNSET)
        return invalid(OPT_RADIO);
    if (enable == nullptr)
        return invalid(OPT_ENABLE);
    return periodic_request(session, code, band, *enable == '1', period);
}

int bgscan_command(AcSession &session, const OptArgList &opts)
{
    if (periodic_command(session, opts, COMMAND_BACKGROUND_SCAN, BAND_5G1) != 0)
        return 1;
    return read_counted_results(session);
}

int autoch_command(AcSession &session, const OptArgList &opts)
{
    return periodic_command(session, opts, COMMAND_AUTO_CHANNEL, BAND_5G);
}

int autotp_command(AcSession &session, const OptArgList &opts)
{
    return periodic_command(session, opts, COMMAND_AUTO_TX_POWER, BAND_5G1);
}
