// SPDX-License-Identifier: MIT
// The command line of the simulated controller.
#pragma once

#include "common/command_line.h"
#include "sim/client.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstdint>
#include <cstring>
#include <netinet/in.h>
#include <string>

struct SimOptions {
    in_addr address = {};
    uint16_t port = 0; // 0: any free one
    int32_t handshake = HANDSHAKE_ADMITTED;
    Misbehaviour misbehaviour;
    const char *pid_file = "";
    ControllerOptions controller;
};

// How many devices of a kind.
inline bool take_devices(const char *text, uint32_t &count)
{
    return take_number<uint32_t>(text, 0, DEVICES_MAX, count);
}
inline constexpr const char *DEVICES_EXPECTED = "a number up to 100000";
static_assert(DEVICES_MAX == 100000);
inline constexpr const char *UINT32_EXPECTED = "a number up to 4294967295";

// MAC=VALUE; returns the value, or null.
inline const char *take_mac(const char *text, Mac &mac)
{
    const char *end = text + strspn(text, "0123456789ABCDEFabcdef:");
    return *end == '=' && std::count(text, end, ':') == 5 && parse_mac(text, mac) ? end + 1
                                                                                  : nullptr;
}

inline bool take_result(const char *text, ControllerOptions &options)
{
    Mac mac;
    const char *value = take_mac(text, mac);
    uint8_t code = 0;
    if (value == nullptr || !take_number(value, code))
        return false;
    options.results[mac] = code;
    return true;
}

inline bool take_upgrade(const char *text, ControllerOptions &options)
{
    Mac mac;
    const char *value = take_mac(text, mac);
    if (value == nullptr)
        return false;
    const std::string_view how = value;
    UpgradeCourse &course = options.upgrades[mac];
    course.kind = how == "fail"   ? UpgradeCourse::fails
                  : how == "hang" ? UpgradeCourse::hangs
                                  : UpgradeCourse::timed;
    return course.kind != UpgradeCourse::timed ||
           (take_number(value, course.seconds) && course.seconds > 0);
}

inline bool take_config(const char *text, ControllerOptions &options)
{
    Mac mac;
    const char *how = take_mac(text, mac);
    return how != nullptr && parse_config_course(how, options.configs[mac]);
}

// clang-format off
inline constexpr Option<SimOptions> SIM_OPTIONS[] = {
    {{.name = "port", .argument = "N",
      .help = "port to listen on; 0: any free one, which is printed",
      .expected = "a number up to 65535", .initial = "1235"},
     [](const char *text, SimOptions &to) { return take_number(text, to.port); }},
    {{.name = "address", .argument = "ADDR", .help = "IPv4 address to listen on",
      .expected = "an IPv4 address in dotted form", .initial = "127.0.0.1"},
     [](const char *text, SimOptions &to) { return inet_pton(AF_INET, text, &to.address) == 1; }},
    {{.name = "pid-file", .argument = "FILE",
      .help = "write the process id there, and remove the file at the end", .expected = "a file name"},
     [](const char *text, SimOptions &to) { return take_name(text, to.pid_file); }},
    {{.name = "verbose", .argument = nullptr, .help = "a line on standard error for each request"},
     [](const char *, SimOptions &to) { return take_flag(to.controller.verbose); }},

    {{.name = "aps", .argument = "N", .help = "access points", .expected = DEVICES_EXPECTED,
      .heading = "The fleet; the same numbers give the same fleet. At most 100000 of a kind:",
      .initial = "6"},
     [](const char *text, SimOptions &to) { return take_devices(text, to.controller.fleet.aps); }},
    {{.name = "switches", .argument = "N", .help = "switches", .expected = DEVICES_EXPECTED, .initial = "2"},
     [](const char *text, SimOptions &to) { return take_devices(text, to.controller.fleet.switches); }},
    {{.name = "others", .argument = "N", .help = "devices of another kind", .expected = DEVICES_EXPECTED,
      .initial = "1"},
     [](const char *text, SimOptions &to) { return take_devices(text, to.controller.fleet.others); }},
    {{.name = "seed", .argument = "N", .help = "what the rest of it is drawn from", .expected = UINT32_EXPECTED,
      .initial = "1"},
     [](const char *text, SimOptions &to) { return take_number(text, to.controller.fleet.seed); }},
    {{.name = "max-wtps", .argument = "N", .help = "most devices under management", .expected = UINT32_EXPECTED,
      .initial = "2048"},
     [](const char *text, SimOptions &to) { return take_number(text, to.controller.max_wtps); }},

    {{.name = "busy", .argument = nullptr, .help = "refuse clients as a busy controller does",
      .heading = "Misbehaviour, for testing:"},
     [](const char *, SimOptions &to) {
         to.handshake = HANDSHAKE_BUSY;
         return true;
     }},
    {{.name = "refuse", .argument = "CODE", .help = "answer clients with another handshake word",
      .expected = "a number of 32 bits other than 1"},
     [](const char *text, SimOptions &to) {
         return take_number(text, to.handshake) && to.handshake != HANDSHAKE_ADMITTED;
     }},
    {{.name = "cut", .argument = "N",
      .help = "end each connection after N bytes, the handshake's 4 included",
      .expected = "a number of bytes"},
     [](const char *text, SimOptions &to) { return take_number(text, to.misbehaviour.cut.emplace()); }},
    {{.name = "trickle", .argument = nullptr, .help = "send one byte at a time"},
     [](const char *, SimOptions &to) { return take_flag(to.misbehaviour.trickle); }},
    {{.name = "result", .argument = "MAC=CODE",
      .help = "a device that answers every action with a result code; repeatable", .repeatable = true,
      .expected = "MAC=CODE, with a code up to 255"},
     [](const char *text, SimOptions &to) { return take_result(text, to.controller); }},
    {{.name = "upgrade", .argument = "MAC=HOW",
      .help = "a device whose upgrades fail, hang or take a time; repeatable", .repeatable = true,
      .expected = "MAC=fail, MAC=hang or MAC=SECONDS"},
     [](const char *text, SimOptions &to) { return take_upgrade(text, to.controller); }},
    {{.name = "config", .argument = "MAC=HOW",
      .help = "a device that refuses, changes or delays configurations; repeatable",
      .repeatable = true,
      .expected = "MAC= and refuse:CODE:TEXT, alter:PATH=VALUE, late:SECONDS, offline:SECONDS, "
                  "offline:never or lose"},
     [](const char *text, SimOptions &to) { return take_config(text, to.controller); }},
};
// clang-format on

inline constexpr ProgramInfo SIM_PROGRAM = {
    "ac-sim",
    "",
    "A simulated wireless access controller: it keeps a fleet of devices, answers every\n"
    "request of zov and changes its state by what it is told. It runs nothing that it is\n"
    "told to run, and forgets everything when it ends. SIGTERM, SIGINT and SIGHUP end it.\n",
};
