// SPDX-License-Identifier: MIT
//
//     request   1 command code 18
//               2 payload length, its low 16 bits
//               2 count N of devices
//             6*N devices
//               1 output type: 0 all, 1 standard output, 2 standard error
//               4 timeout in seconds
//               2 length L
//               L command
//     reply     for each device: 1 result byte; when it is 0, 2 length M and M output
#include "ops/sh.h"

#include "cli/option_checks.h"
#include "proto/reply_reader.h"
#include "proto/request_writer.h"
#include "proto/result_code.h"
#include "util/output.h"

#include <cstdlib>
#include <cstring>

// Reads one device's output, which may be empty, into `output`.
static void read_output(ReplyReader &reply, Text &output)
{
    const auto length = reply.number<uint16_t>();
    if (!reply.ok())
        return;
    char *room = output.allocate(length);
    if (room == nullptr) {
        fail("ERROR: Out of memory.\n");
        reply.set_failed();
        return;
    }
    reply.take(room, length);
}

// Fills one output for each device; it stays absent for a device that answered with a failure,
// which is printed.
static int sh_request(AcSession &session, const MacList &wtps, int type, int timeout,
                      const char *command, Table<Text> &outputs)
{
    const size_t length = strlen(command), payload = length + 6 * size_t{wtps.size()} + 9;
    RequestWriter request(session, COMMAND_SHELL);
    if (length > UINT16_MAX)
        request.length16(payload); // refuses the request
    request.u16(static_cast<uint16_t>(payload));
    request.mac_list(wtps);
    request.u8(static_cast<uint8_t>(type));
    request.u32(static_cast<uint32_t>(timeout));
    request.u16(static_cast<uint16_t>(length));
    request.bytes(command, length);
    if (request.finish() != 0)
        return 1;

    ReplyReader reply(session);
    for (const Mac &mac : wtps) {
        Text &output = outputs.append();
        const auto code = reply.number<uint8_t>();
        if (code != RESULT_SUCCESS)
            print_result_code(code, mac);
        else
            read_output(reply, output);
        if (!reply.ok())
            return 1;
    }
    return 0;
}

static void print_outputs(const MacList &wtps, const Table<Text> &outputs)
{
    Output &out = standard_output;
    for (uint32_t i = 0; i < wtps.size(); i++) {
        if (outputs[i].absent())
            continue;
        out.put("WTP ");
        out.advance(write_mac_lower(out.reserve(MAC_TEXT_ROOM), wtps[i]));
        out.put(" output:\n");
        out.put(outputs[i].c_str());
        out.put('\n');
    }
}

int sh_command(AcSession &session, const OptArgList &opts)
{
    MacOption wtps;
    const char *command = nullptr;
    int type = 0, timeout = 0;
    for (const OptArg &opt : opts)
        switch (opt.code) {
        case OPT_MAC:
            if (!wtps.take(opt))
                return 1;
            break;
        case OPT_CMD:
            command = opt.arg;
            break;
        case OPT_TYPE:
            type = atoi(opt.arg);
            if (type < 0 || type > 2)
                return invalid_argument(opt);
            break;
        case OPT_TIMEOUT:
            timeout = atoi(opt.arg);
            if (timeout < 0)
                return invalid_argument(opt);
            break;
        default:
            return unknown_option(opt);
        }
    if (!wtps.given())
        return require_option(OPT_MAC);
    if (command == nullptr)
        return require_option(OPT_CMD);

    Table<Text> outputs;
    if (!outputs.reserve(wtps.list().size()))
        return fail("ERROR: Out of memory\n");
    if (sh_request(session, wtps.list(), type, timeout, command, outputs) != 0)
        return 1;
    print_outputs(wtps.list(), outputs);
    return 0;
}
