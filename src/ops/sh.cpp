// SPDX-License-Identifier: MIT
// zov sh: runs a shell command on devices and prints what they answer.
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
#include "options/option_checks.h"
#include "proto/reply_reader.h"
#include "proto/request_writer.h"
#include "proto/result_code.h"
#include "util/output.h"

#include <cstdlib>
#include <cstring>

extern const CommandSpec SH_ROW;

// Reads one device's output, which may be empty, into `output`.
static void read_output(ReplyReader &reply, Text &output)
{
    const auto length = reply.number<uint16_t>();
    if (!reply.ok())
        return;
    char *room = output.allocate(length);
    if (room == nullptr)
        reply.report_no_memory("ERROR: Out of memory.\n");
    else
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
        request.refuse("bytes", payload, UINT16_MAX);
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
            print_result_code(code, mac, session.messages);
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
        out.advance(write_mac_lower(out.room(MAC_TEXT_MAX), wtps[i]));
        out.put(" output:\n");
        out.put(outputs[i].c_str());
        out.put('\n');
    }
}

static int sh_command(AcSession &session, const OptArgList &opts)
{
    MacOption wtps(OPT_MAC);
    if (check_options(SH_ROW, opts, [&](const OptArg &opt) {
            const int number = opt.arg == nullptr ? 0 : atoi(opt.arg);
            if ((opt.code == OPT_TYPE && (number < 0 || number > 2)) ||
                (opt.code == OPT_TIMEOUT && number < 0))
                return report_invalid_argument(opt);
            return wtps.take(opt);
        }) != 0)
        return 1;
    if (!wtps.given())
        return report_missing_option(OPT_MAC);
    if (!opts.given(OPT_CMD))
        return report_missing_option(OPT_CMD);

    Table<Text> outputs;
    if (!outputs.reserve(wtps.list().size()))
        return fail("ERROR: Out of memory\n");
    if (sh_request(session, wtps.list(), opts.number(OPT_TYPE), opts.number(OPT_TIMEOUT),
                   opts.text(OPT_CMD), outputs) != 0)
        return 1;
    print_outputs(wtps.list(), outputs);
    return 0;
}

const CommandSpec SH_ROW = {
    sh_command,
    "sh",
    "Do shell command",
    {"--mac MAC\t\tthe wtp's mac address list", "--cmd COMMAND\t\tshell commag\t\t",
     "--type 0/1/2\t\tspecify output type. 0:all 1:stdout 2:stderr",
     "--timeout SEC\t\tspecify how many seconds to wait for commmand execution"},
    {{OPT_MAC}, {OPT_CMD}, {OPT_TYPE, "0 1 2"}, {OPT_TIMEOUT}},
};
