// SPDX-License-Identifier: MIT
// zov scan: a site survey by devices, on one band.
//
//     reply     N result bytes
#include "ops/radio_band.h"
#include "options/option_checks.h"
#include "proto/results.h"

static int scan_command(AcSession &session, const OptArgList &opts)
{
    MacOption wtps(OPT_MAC);
    if (check_options(SCAN_COMMAND, opts, [&](const OptArg &opt) { return wtps.take(opt); }) != 0)
        return 1;
    const RadioBand band = radio_band(opts.text(OPT_RADIO), BAND_5G);
    if (!wtps.given())
        return report_missing_option(OPT_MAC);
    if (band == BAND_UNSET)
        return report_missing_option(OPT_RADIO);
    return request_device_results(session, ScanRequest{static_cast<uint8_t>(band), wtps.list()});
}

const CommandSpec SCAN_COMMAND = {
    scan_command,
    "scan",
    "Do sitesurvey",
    {"--mac MAC\t\tthe wtp's mac address list", "--radio 2g/5g\t\tthe radio type"},
    {{OPT_MAC}, {OPT_RADIO, "2g 5g"}},
};
