// SPDX-License-Identifier: MIT
//
//     request   1 command code 9
//               4 state
//     reply     none
#include "ops/initfw.h"

#include "cli/option_checks.h"
#include "proto/request_writer.h"

#include <cstdlib>

int initfw_command(AcSession &session, const OptArgList &opts)
{
    int state = 0;
    for (const OptArg &opt : opts) {
        if (opt.code != OPT_FWSTAT)
            return unknown_option(opt);
        state = atoi(opt.arg);
    }
    RequestWriter request(session, COMMAND_FIRMWARE_STATE);
    request.u32(static_cast<uint32_t>(state));
    return request.finish();
}
