// SPDX-License-Identifier: MIT
#include "cli/options.h"

#include <algorithm>
#include <iterator>

constexpr const option OPTION_TABLE[] = {
    {"file", required_argument, nullptr, OPT_FILE},
    {"ip", required_argument, nullptr, OPT_IP},
    {"acserver", required_argument, nullptr, OPT_ACSERVER},
    {"acport", required_argument, nullptr, OPT_ACPORT},
    {"mac", required_argument, nullptr, OPT_MAC},
    {"add", no_argument, nullptr, OPT_ADD},
    {"del", no_argument, nullptr, OPT_DEL},
    {"json", no_argument, nullptr, OPT_JSON},
    {"managed", no_argument, nullptr, OPT_MANAGED},
    {"unmanaged", no_argument, nullptr, OPT_UNMANAGED},
    {"join", no_argument, nullptr, OPT_JOIN},
    {"period", required_argument, nullptr, OPT_PERIOD},
    {"password", no_argument, nullptr, OPT_PASSWORD},
    {"factory", no_argument, nullptr, OPT_FACTORY},
    {"all", no_argument, nullptr, OPT_ALL},
    {"fwstat", required_argument, nullptr, OPT_FWSTAT},
    {"fwresult", no_argument, nullptr, OPT_FWRESULT},
    {"flag", required_argument, nullptr, OPT_FLAG},
    {"no_cfg", no_argument, nullptr, OPT_NO_CFG},
    {"radio", required_argument, nullptr, OPT_RADIO},
    {"wlan", required_argument, nullptr, OPT_WLAN},
    {"client", required_argument, nullptr, OPT_CLIENT},
    {"type", required_argument, nullptr, OPT_TYPE},
    {"breif", no_argument, nullptr, OPT_BREIF},
    {"enable", required_argument, nullptr, OPT_ENABLE},
    {"basic", no_argument, nullptr, OPT_BASIC},
    {"cmd", required_argument, nullptr, OPT_CMD},
    {"wtp", no_argument, nullptr, OPT_WTP},
    {"no_stainf", no_argument, nullptr, OPT_NO_STAINF},
    {"timeout", required_argument, nullptr, OPT_TIMEOUT},
    {"wait", required_argument, nullptr, OPT_WAIT},
    {"flickreboot", no_argument, nullptr, OPT_FLICKREBOOT},
    {nullptr, 0, nullptr, 0},
};

// getopt_long answers with these characters for an option that it refuses.
static_assert(std::none_of(std::begin(OPTION_TABLE), std::end(OPTION_TABLE),
                           [](const option &row) { return row.val == ':' || row.val == '?'; }));

const char *option_name(int code)
{
    const option *row = OPTION_TABLE;
    while (row->name != nullptr && row->val != code)
        row++;
    return row->name;
}
