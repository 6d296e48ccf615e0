// SPDX-License-Identifier: MIT
// zov initfw: sets the controller's firmware upgrading state.
//
//     reply     none
#include "options/option_checks.h"
#include "proto/request_writer.h"

static int initfw_command(AcSession &session, const OptArgList &opts)
{
    if (check_options(INITFW_COMMAND, opts) != 0)
        return 1;
    return send_request(session,
                        FirmwareStateRequest{static_cast<uint32_t>(opts.number(OPT_FWSTAT))});
}

const CommandSpec INITFW_COMMAND = {
    initfw_command,        "initfw",
    "Set Upgrading state", {"--fwstat\t\tlist initialize WTPs status of firmware"},
    {{OPT_FWSTAT}},
};
