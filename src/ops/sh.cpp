// SPDX-License-Identifier: MIT
// zov sh: runs a shell command on devices and prints what they answer.
//
//     reply     for each device: 1 result byte; when it is 0, 2 length M and M output
#include "options/option_checks.h"
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
    char *to = output.allocate(length);
    if (to == nullptr)
        reply.report_no_memory("ERROR: Out of memory.\n");
    else
        reply.take(to, length);
}

// Fills one output for each device; it stays absent for a device that answered with a failure,
// which is reported.
static int sh_request(AcSession &session, const ShellRequest &request, FixedArray<Text> &outputs)
{
    if (send_request(session, request) != 0)
        return 1;
    ReplyReader reply(session);
    for (const Mac &mac : request.wtps) {
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

static void print_outputs(const MacList &wtps, const FixedArray<Text> &outputs)
{
    Output &out = standard_output;
    for (uint32_t i = 0; i < wtps.size(); i++) {
        if (outputs[i].absent())
            continue;
        out.put("WTP ");
        out.commit(write_mac_lower(out.prepare(MAC_TEXT_MAX), wtps[i]));
        out.put(" output:\n");
        out.put(outputs[i].c_str());
        out.put('\n');
    }
}

static int sh_command(AcSession &session, const OptArgList &opts)
{
    MacOption wtps(OPT_MAC);
    if (check_options(SH_COMMAND, opts, [&](const OptArg &opt) {
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

    FixedArray<Text> outputs;
    if (!outputs.reserve(wtps.list().size()))
        return fail("ERROR: Out of memory\n");
    if (sh_request(session,
                   {wtps.list(),
                    static_cast<uint8_t>(opts.number(OPT_TYPE)),
                    static_cast<uint32_t>(opts.number(OPT_TIMEOUT)),
                    {opts.text(OPT_CMD)}},
                   outputs) != 0)
        return 1;
    print_outputs(wtps.list(), outputs);
    return 0;
}

const CommandSpec SH_COMMAND = {
    sh_command,
    "sh",
    "Do shell command",
    {"--mac MAC\t\tthe wtp's mac address list", "--cmd COMMAND\t\tshell commag\t\t",
     "--type 0/1/2\t\tspecify output type. 0:all 1:stdout 2:stderr",
     "--timeout SEC\t\tspecify how many seconds to wait for commmand execution"},
    {{OPT_MAC}, {OPT_CMD}, {OPT_TYPE, "0 1 2"}, {OPT_TIMEOUT}},
};
