// SPDX-License-Identifier: MIT
// The long options of all commands, and those that one command line gave.
#pragma once

#include <getopt.h>

// Every option in search order: its name in the code, its word, whether it takes an argument, its
// code. Code 0 and 1 are taken by main, all others by the commands that accept them.
#define ZOV_OPTIONS(OPTION)                                                                        \
    OPTION(FILE, "file", required_argument, 10)                                                    \
    OPTION(IP, "ip", required_argument, 11)                                                        \
    OPTION(ACSERVER, "acserver", required_argument, 0)                                             \
    OPTION(ACPORT, "acport", required_argument, 1)                                                 \
    OPTION(MAC, "mac", required_argument, 2)                                                       \
    OPTION(ADD, "add", no_argument, 3)                                                             \
    OPTION(DEL, "del", no_argument, 4)                                                             \
    OPTION(JSON, "json", no_argument, 5)                                                           \
    OPTION(MANAGED, "managed", no_argument, 6)                                                     \
    OPTION(UNMANAGED, "unmanaged", no_argument, 7)                                                 \
    OPTION(JOIN, "join", no_argument, 8)                                                           \
    OPTION(PERIOD, "period", required_argument, 9)                                                 \
    OPTION(PASSWORD, "password", no_argument, 12)                                                  \
    OPTION(FACTORY, "factory", no_argument, 13)                                                    \
    OPTION(ALL, "all", no_argument, 17)                                                            \
    OPTION(FWSTAT, "fwstat", required_argument, 14)                                                \
    OPTION(FWRESULT, "fwresult", no_argument, 15)                                                  \
    OPTION(FLAG, "flag", required_argument, 16)                                                    \
    OPTION(NO_CFG, "no_cfg", no_argument, 21)                                                      \
    OPTION(RADIO, "radio", required_argument, 18)                                                  \
    OPTION(WLAN, "wlan", required_argument, 19)                                                    \
    OPTION(CLIENT, "client", required_argument, 20)                                                \
    OPTION(TYPE, "type", required_argument, 22)                                                    \
    OPTION(BREIF, "breif", no_argument, 23)                                                        \
    OPTION(ENABLE, "enable", required_argument, 24)                                                \
    OPTION(BASIC, "basic", no_argument, 25)                                                        \
    OPTION(CMD, "cmd", required_argument, 26)                                                      \
    OPTION(WTP, "wtp", no_argument, 27)                                                            \
    OPTION(NO_STAINF, "no_stainf", no_argument, 28)                                                \
    OPTION(TIMEOUT, "timeout", required_argument, 29)                                              \
    OPTION(WAIT, "wait", required_argument, 30)                                                    \
    OPTION(FLICKREBOOT, "flickreboot", no_argument, 31)

enum OptionCode : int {
#define OPTION(name, word, argument, code) OPT_##name = (code),
    ZOV_OPTIONS(OPTION)
#undef OPTION
        OPT_NONE = -1,
};

// The same as the table that getopt_long(3) reads, ended by a row of zeros.
extern const option OPTION_TABLE[];

// The long name of an option code; null for a code that no option has.
const char *option_name(int code);

struct OptArg {
    int code;        // an OptionCode
    const char *arg; // the option's argument within the process's arguments, or null
};

enum : int { OPT_ARG_MAX = 64 };

// The options of a command line, in its order; repeated ones are all there.
struct OptArgList {
    OptArg rows[OPT_ARG_MAX];
    int count = 0;

    const OptArg *begin() const { return rows; }
    const OptArg *end() const { return rows + count; }

    bool given(OptionCode code) const;
    const char *text(OptionCode code) const; // the last argument; null when not given
    int number(OptionCode code) const;       // the last argument as atoi(3) reads it, or 0
};
