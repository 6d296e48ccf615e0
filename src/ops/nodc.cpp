// SPDX-License-Identifier: MIT
//
//     request   1 command code 16
//               4 value 0
//     reply     none
#include "ops/nodc.h"

#include "proto/request_writer.h"

// Any options are accepted and ignored.
int nodc_command(AcSession &session, const OptArgList &)
{
    RequestWriter request(session, COMMAND_NO_DISCOVERY);
    request.u32(0);
    return request.finish();
}
