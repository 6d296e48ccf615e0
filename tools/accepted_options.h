// SPDX-License-Identifier: MIT
// Which options each command's handler accepts, for completion. (zov itself leaves that to the
// handlers; a test asks every handler about every option and compares.)
#pragma once

#include "cli/options.h"

#include <initializer_list>
#include <string_view>

struct AcceptedOptions {
    std::string_view command;
    std::initializer_list<OptionCode> codes;
};

inline constexpr AcceptedOptions ACCEPTED_OPTIONS[] = {
    {"ac", {OPT_JSON}},
    {"wtps",
     {OPT_MAC, OPT_JSON, OPT_MANAGED, OPT_UNMANAGED, OPT_JOIN, OPT_PASSWORD, OPT_FWRESULT,
      OPT_NO_CFG, OPT_BREIF, OPT_BASIC, OPT_NO_STAINF}},
    {"cfg", {OPT_MAC, OPT_ADD, OPT_DEL, OPT_FILE, OPT_IP, OPT_TYPE, OPT_WAIT}},
    {"upg", {OPT_MAC, OPT_PERIOD, OPT_TYPE}},
    {"rst", {OPT_MAC, OPT_FACTORY, OPT_WAIT, OPT_FLICKREBOOT}},
    {"mem", {OPT_ALL}},
    {"initfw", {OPT_FWSTAT}},
    {"wtpflag", {OPT_MAC, OPT_FLAG}},
    {"scan", {OPT_MAC, OPT_RADIO}},
    {"bgscan", {OPT_RADIO, OPT_ENABLE, OPT_PERIOD}},
    {"autoch", {OPT_RADIO, OPT_ENABLE, OPT_PERIOD}},
    {"autotp", {OPT_RADIO, OPT_ENABLE, OPT_PERIOD}},
    {"kick", {OPT_MAC, OPT_RADIO, OPT_WLAN, OPT_CLIENT}},
    {"online", {}},
    {"exit", {}},
    {"kill", {}},
    {"dbg", {OPT_ENABLE, OPT_WTP, OPT_MAC}},
    {"nodc", {}}, // ignores any
    {"cac", {OPT_MAC, OPT_IP}},
    {"sh", {OPT_MAC, OPT_CMD, OPT_TYPE, OPT_TIMEOUT}},
    {"fwlist", {OPT_MAC}},
};

// The values of an option, where they are known; they can differ between commands.
struct KnownValues {
    std::string_view command; // empty: all others
    OptionCode code;
    std::string_view values; // parted by blanks
};

inline constexpr KnownValues KNOWN_VALUES[] = {
    {"scan", OPT_RADIO, "2g 5g"}, {"autoch", OPT_RADIO, "2g 5g"}, {"", OPT_RADIO, "2g 5g 5g1"},
    {"", OPT_ENABLE, "0 1"},      {"cfg", OPT_TYPE, "0 1"},       {"", OPT_TYPE, "0 1 2"},
    {"wtpflag", OPT_FLAG, "1 2"},
};
