// SPDX-License-Identifier: MIT
// The long options of all commands, and those that one command line gave.
#pragma once

#include <getopt.h>

enum OptionCode : int {
    OPT_ACSERVER = 0,
    OPT_ACPORT = 1,
    OPT_MAC = 2,
    OPT_ADD = 3,
    OPT_DEL = 4,
    OPT_JSON = 5,
    OPT_MANAGED = 6,
    OPT_UNMANAGED = 7,
    OPT_JOIN = 8,
    OPT_PERIOD = 9,
    OPT_FILE = 10,
    OPT_IP = 11,
    OPT_PASSWORD = 12,
    OPT_FACTORY = 13,
    OPT_FWSTAT = 14,
    OPT_FWRESULT = 15,
    OPT_FLAG = 16,
    OPT_ALL = 17,
    OPT_RADIO = 18,
    OPT_WLAN = 19,
    OPT_CLIENT = 20,
    OPT_NO_CFG = 21,
    OPT_TYPE = 22,
    OPT_BREIF = 23,
    OPT_ENABLE = 24,
    OPT_BASIC = 25,
    OPT_CMD = 26,
    OPT_WTP = 27,
    OPT_NO_STAINF = 28,
    OPT_TIMEOUT = 29,
    OPT_WAIT = 30,
    OPT_FLICKREBOOT = 31,
};

// All options in search order, ended by a row of zeros: the table that getopt_long(3) reads.
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
};
