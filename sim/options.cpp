// SPDX-License-Identifier: MIT
#include "options.h"

#include <arpa/inet.h>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <getopt.h>
#include <vector>

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
    "  --version        print the version\n"
    "  -h, --help       print this text\n"
    "\n"
    "The fleet; the same numbers give the same fleet. At most 100000 of a kind:\n"
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

// The whole text as a number of the target's type.
template <class Int> bool take_number(const char *text, Int &number)
{
    const char *end = text + strlen(text);
    const auto [last, error] = std::from_chars(text, end, number);
    return error == std::errc() && last == end && end != text;
}

bool take_devices(const char *text, uint32_t &count)
{
    return take_number(text, count) && count <= DEVICES_MAX;
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

using Arg = const char *;
using To = SimOptions &;

struct Option {
    const char *name;
    int argument;                 // 1: there is one
    bool (*take)(Arg arg, To to); // false: the argument does not fit
    const char *bounds = "";
};

constexpr const char *DEVICES = ", expected a number up to 100000";
static_assert(DEVICES_MAX == 100000);

constexpr Option OPTIONS[] = {
    {"port", 1, [](Arg arg, To to) { return take_number(arg, to.port); }},
    {"address", 1, [](Arg arg, To to) { return inet_pton(AF_INET, arg, &to.address) == 1; }},
    {"pid-file", 1, [](Arg arg, To to) { return (to.pid_file = arg, true); }},
    {"verbose", 0, [](Arg, To to) { return to.controller.verbose = true; }},
    {"aps", 1, [](Arg arg, To to) { return take_devices(arg, to.controller.fleet.aps); }, DEVICES},
    {"switches", 1, [](Arg arg, To to) { return take_devices(arg, to.controller.fleet.switches); },
     DEVICES},
    {"others", 1, [](Arg arg, To to) { return take_devices(arg, to.controller.fleet.others); },
     DEVICES},
    {"seed", 1, [](Arg arg, To to) { return take_number(arg, to.controller.fleet.seed); }},
    {"max-wtps", 1, [](Arg arg, To to) { return take_number(arg, to.controller.max_wtps); }},
    {"busy", 0, [](Arg, To to) { return (to.handshake = HANDSHAKE_BUSY, true); }},
    {"refuse", 1, [](Arg arg, To to) { return take_number(arg, to.handshake); }},
    {"cut", 1, [](Arg arg, To to) { return take_number(arg, to.faults.cut.emplace()); }},
    {"trickle", 0, [](Arg, To to) { return to.faults.trickle = true; }},
    {"result", 1, [](Arg arg, To to) { return take_result(arg, to.controller); }},
};

enum : int { OPT_HELP = 'h', OPT_VERSION = 'v', OPT_FIRST = 256 }; // those of the table from here

} // namespace

int read_options(int argc, char **argv, SimOptions &options)
{
    options.address.s_addr = htonl(INADDR_LOOPBACK);
    std::vector<option> known;
    for (const Option &row : OPTIONS)
        known.push_back(
            {row.name, row.argument, nullptr, OPT_FIRST + static_cast<int>(known.size())});
    known.insert(known.end(), {{"help", no_argument, nullptr, OPT_HELP},
                               {"version", no_argument, nullptr, OPT_VERSION},
                               {nullptr, 0, nullptr, 0}});
    for (;;) {
        const int code = getopt_long(argc, argv, "h", known.data(), nullptr);
        if (code == -1)
            break;
        if (code == OPT_HELP || code == OPT_VERSION) {
            fputs(code == OPT_HELP ? HELP : "ac-sim " AC_SIM_VERSION "\n", stdout);
            return 0;
        }
        if (code == '?')
            return 2;
        const Option &row = OPTIONS[code - OPT_FIRST];
        if (!row.take(optarg, options)) {
            fprintf(stderr, "ac-sim: --%s: bad argument '%s'%s\n", row.name, optarg, row.bounds);
            return 2;
        }
    }
    if (optind < argc) {
        fprintf(stderr, "ac-sim: unexpected argument '%s'\n", argv[optind]);
        return 2;
    }
    return -1;
}
