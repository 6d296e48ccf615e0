// SPDX-License-Identifier: MIT
// zov kick: disconnects stations, which its fixed texts call clients.
//
//     reply     N result bytes
#include "ops/radio_band.h"
#include "options/option_checks.h"
#include "proto/results.h"
#include "util/output.h"

static int kick_command(AcSession &session, const OptArgList &opts)
{
    MacOption wtps(OPT_MAC), clients(OPT_CLIENT);
    if (check_options(KICK_COMMAND, opts, [&](const OptArg &opt) {
            if (opt.code == OPT_WLAN && (*opt.arg < '0' || *opt.arg > '9'))
                return fail("ERROR:  Invalid --%s argument '%s'.\n", option_name(OPT_WLAN),
                            opt.arg);
            return opt.code == OPT_CLIENT ? clients.take(opt) : wtps.take(opt);
        }) != 0)
        return 1;
    const RadioBand band = radio_band(opts.text(OPT_RADIO), BAND_5G1);
    if (!wtps.given())
        return report_missing_option(OPT_MAC);
    if (band == BAND_UNSET)
        return report_missing_option(OPT_RADIO);
    if (!opts.given(OPT_WLAN))
        return report_missing_option(OPT_WLAN);
    if (!clients.given())
        return report_missing_option(OPT_CLIENT);
    return request_device_results(session, KickRequest{static_cast<uint8_t>(band),
                                                       static_cast<uint8_t>(opts.number(OPT_WLAN)),
                                                       clients.list(), wtps.list()});
}

const CommandSpec KICK_COMMAND = {
    kick_command,
    "kick",
    "Kick wireless client",
    {"--mac MAC\t\tthe wtp's mac address list", "--radio 2g/5g\t\tthe sitesurvey radio",
     "--wlan NUM\t\tthe wlan number", "--client MAC\t\tthe client's mac address list"},
    {{OPT_MAC}, {OPT_RADIO, "2g 5g 5g1"}, {OPT_WLAN}, {OPT_CLIENT}},
};
