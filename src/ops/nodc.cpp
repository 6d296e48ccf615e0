// SPDX-License-Identifier: MIT
// zov nodc: tells the controller to stop discovering devices.
//
//     reply     none
#include "options/command.h"
#include "proto/request_writer.h"

// Any options are accepted and ignored.
static int nodc_command(AcSession &session, const OptArgList &)
{
    return send_request(session, NoDiscoveryRequest{0});
}

const CommandSpec NODC_COMMAND = {nodc_command, "nodc", "Disable AC discovery", {}, {}};
