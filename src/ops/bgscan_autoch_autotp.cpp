// SPDX-License-Identifier: MIT
// zov bgscan, autoch, autotp: a function that the controller repeats on all devices of a band.
//
//     reply     counted results for bgscan, none for the others
#include "ops/radio_band.h"
#include "options/option_checks.h"
#include "proto/request_writer.h"
#include "proto/results.h"
#include "util/output.h"

#include <cstring>

// Unlike elsewhere the message does not quote the argument, which may be missing.
static int report_invalid(OptionCode code)
{
    return fail("ERROR: Invalid --%s argument.\n", option_name(code));
}

template <class Request>
static int periodic_command(const CommandSpec &row, AcSession &session, const OptArgList &opts,
                            RadioBand last_band)
{
    if (check_options(row, opts, [](const OptArg &opt) {
            if (opt.code == OPT_ENABLE && strcmp(opt.arg, "0") != 0 && strcmp(opt.arg, "1") != 0)
                return report_invalid(OPT_ENABLE);
            return 0;
        }) != 0)
        return 1;
    const RadioBand band = radio_band(opts.text(OPT_RADIO), last_band);
    if (band == BAND_UNSET)
        return report_invalid(OPT_RADIO);
    if (!opts.given(OPT_ENABLE))
        return report_invalid(OPT_ENABLE);
    return send_request(session, Request{static_cast<uint32_t>(band), opts.number(OPT_ENABLE) == 1,
                                         static_cast<uint32_t>(opts.number(OPT_PERIOD))});
}

static int bgscan_command(AcSession &session, const OptArgList &opts)
{
    if (periodic_command<BackgroundScanRequest>(BGSCAN_COMMAND, session, opts, BAND_5G1) != 0)
        return 1;
    return read_counted_results(session);
}

static int autoch_command(AcSession &session, const OptArgList &opts)
{
    return periodic_command<AutoChannelRequest>(AUTOCH_COMMAND, session, opts, BAND_5G);
}

static int autotp_command(AcSession &session, const OptArgList &opts)
{
    return periodic_command<AutoTxPowerRequest>(AUTOTP_COMMAND, session, opts, BAND_5G1);
}

#define PERIODIC_HELP                                                                              \
    {                                                                                              \
        "--radio 2g/5g\t\tradio type", "--enable 0/1\t\tenable or not",                            \
            "--period \t\tinterval in seconds"                                                     \
    }

const CommandSpec BGSCAN_COMMAND = {
    bgscan_command,
    "bgscan",
    "Do background sitesurvey",
    PERIODIC_HELP,
    {{OPT_RADIO, "2g 5g 5g1"}, {OPT_ENABLE, "0 1"}, {OPT_PERIOD}},
};

const CommandSpec AUTOCH_COMMAND = {
    autoch_command,
    "autoch",
    "Do auto channel selection",
    PERIODIC_HELP,
    {{OPT_RADIO, "2g 5g"}, {OPT_ENABLE, "0 1"}, {OPT_PERIOD}},
};

const CommandSpec AUTOTP_COMMAND = {
    autotp_command,
    "autotp",
    "Do auto tx power",
    PERIODIC_HELP,
    {{OPT_RADIO, "2g 5g 5g1"}, {OPT_ENABLE, "0 1"}, {OPT_PERIOD}},
};
