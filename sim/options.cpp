// SPDX-License-Identifier: MIT
#include "options.h"

#include <arpa/inet.h>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <getopt.h>

namespace {

constexpr const char *HELP =
    "usage: ac-sim [OPTION]...\n"
    "A simulated wireless access controller: it keeps a fleet of devices, answers every\n"
    "request of zov and changes its state by what it is told. It runs nothing that it is\n"
    "told to run, and forgets everything when it ends.\n"
    "\n"
    "  --port N         port to listen on (1235); 0: any free one, which is printed\n"
    "  --address ADDR   IPv4 address to listen on (127.0.0.1)\n"
    "  --pid-file FILE  write the process id there, and remove the file at the end\n"
    "  --verbose        a line on standard error for each request\n"
    "\n"
    "The fleet; the same numbers give the same fleet:\n"
    "  --aps N          access points (6)\n"
    "  --switches N     switches (2)\n"
    "  --others N       devices of another kind (1)\n"
    "  --seed N         what the rest of it is drawn from (1)\n"
    "  --max-wtps N     most devices under management (2048)\n"
    "\n"
    "Misbehaviour, for testing:\n"
    "  --busy           refuse clients as a busy controller does\n"
    "  --refuse CODE    answer clients with another handshake word\n"
    "  --cut N          end each connection after N bytes, the handshake's 4 included\n"
    "  --trickle        send one byte at a time\n"
    "  --result MAC=CODE  a device that answers every action with a result code; repeatable\n"
    "\n"
    "SIGTERM and SIGINT end it.\n";

enum : int {
    OPT_PORT = 1,
    OPT_ADDRESS,
    OPT_PID_FILE,
    OPT_VERBOSE,
    OPT_APS,
    OPT_SWITCHES,
    OPT_OTHERS,
    OPT_SEED,
    OPT_MAX_WTPS,
    OPT_BUSY,
    OPT_REFUSE,
    OPT_CUT,
    OPT_TRICKLE,
    OPT_RESULT,
    OPT_HELP,
};

constexpr option OPTIONS[] = {
    {"port", required_argument, nullptr, OPT_PORT},
    {"address", required_argument, nullptr, OPT_ADDRESS},
    {"pid-file", required_argument, nullptr, OPT_PID_FILE},
    {"verbose", no_argument, nullptr, OPT_VERBOSE},
    {"aps", required_argument, nullptr, OPT_APS},
    {"switches", required_argument, nullptr, OPT_SWITCHES},
    {"others", required_argument, nullptr, OPT_OTHERS},
    {"seed", required_argument, nullptr, OPT_SEED},
    {"max-wtps", required_argument, nullptr, OPT_MAX_WTPS},
    {"busy", no_argument, nullptr, OPT_BUSY},
    {"refuse", required_argument, nullptr, OPT_REFUSE},
    {"cut", required_argument, nullptr, OPT_CUT},
    {"trickle", no_argument, nullptr, OPT_TRICKLE},
    {"result", required_argument, nullptr, OPT_RESULT},
    {"help", no_argument, nullptr, OPT_HELP},
    {nullptr, 0, nullptr, 0},
};

// The whole text as a number of the target's type.
template <class Int> bool take_number(const char *text, Int &number)
{
    const char *end = text + strlen(text);
    const auto [last, error] = std::from_chars(text, end, number);
    return error == std::errc() && last == end && end != text;
}

bool take_result(const char *text, ControllerOptions &options)
{
    const char *equals = strchr(text, '=');
    Mac mac;
    uint8_t code = 0;
    if (equals == nullptr || !parse_mac(text, mac) || !take_number(equals + 1, code))
        return false;
    options.results[mac] = code;
    return true;
}

bool take_cut(const char *text, Faults &faults)
{
    size_t length = 0;
    if (!take_number(text, length))
        return false;
    faults.cut = length;
    return true;
}

bool take_option(int code, const char *arg, SimOptions &options)
{
    ControllerOptions &controller = options.controller;
    switch (code) {
    case OPT_PORT:
        return take_number(arg, options.port);
    case OPT_ADDRESS:
        return inet_pton(AF_INET, arg, &options.address) == 1;
    case OPT_PID_FILE:
        options.pid_file = arg;
        return true;
    case OPT_VERBOSE:
        controller.verbose = true;
        return true;
    case OPT_APS:
        return take_number(arg, controller.fleet.aps);
    case OPT_SWITCHES:
        return take_number(arg, controller.fleet.switches);
    case OPT_OTHERS:
        return take_number(arg, controller.fleet.others);
    case OPT_SEED:
        return take_number(arg, controller.fleet.seed);
    case OPT_MAX_WTPS:
        return take_number(arg, controller.max_wtps);
    case OPT_BUSY:
        options.handshake = HANDSHAKE_BUSY;
        return true;
    case OPT_REFUSE:
        return take_number(arg, options.handshake);
    case OPT_CUT:
        return take_cut(arg, options.faults);
    case OPT_TRICKLE:
        options.faults.trickle = true;
        return true;
    case OPT_RESULT:
        return take_result(arg, controller);
    default:
        return false;
    }
}

} // namespace

int read_options(int argc, char **argv, SimOptions &options)
{
    options.address.s_addr = htonl(INADDR_LOOPBACK);
    for (;;) {
        int index = 0;
        const int code = getopt_long(argc, argv, "", OPTIONS, &index);
        if (code == -1)
            break;
        if (code == OPT_HELP) {
            fputs(HELP, stdout);
            return 0;
        }
        if (code == '?')
            return 2;
        if (!take_option(code, optarg, options)) {
            fprintf(stderr, "ac-sim: --%s: bad argument '%s'\n", OPTIONS[index].name, optarg);
            return 2;
        }
    }
    if (optind < argc) {
        fprintf(stderr, "ac-sim: unexpected argument '%s'\n", argv[optind]);
        return 2;
    }
    return -1;
}
