// SPDX-License-Identifier: MIT
// zov nodc: tells the controller to stop discovering devices.
//
//     request   1 command code 16
//               4 value 0
//     reply     none
#include "options/command.h"
#include "proto/request_writer.h"

extern const CommandSpec NODC_ROW;

// Any options are accepted and ignored.
static int nodc_command(AcSession &session, const OptArgList &)
{
    RequestWriter request(session, COMMAND_NO_DISCOVERY);
    request.u32(0);
    return request.finish();
}

const CommandSpec NODC_ROW = {nodc_command, "nodc", "Disable AC discovery", {}, {}};
