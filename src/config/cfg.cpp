// SPDX-License-Identifier: MIT
// zov cfg: puts devices under management, takes them out, or configures them from JSON files.
#include "config/cfg_request.h"
#include "config/config_file.h"
#include "options/option_checks.h"
#include "util/ipv4.h"
#include "util/output.h"
#include "util/text.h"

#include <cstdlib>
#include <cstring>

namespace {

struct CfgOptions {
    MacOption wtps{OPT_MAC};
    bool add = false, del = false; // not both
    bool ip = false, file = false; // not both
    TlvBuffer ip_items;
    Text file_argument;                  // cut at its commas
    FixedArray<const char *> file_names; // within file_argument, not empty when `file`
    DeviceKind kind = DEVICE_ACCESS_POINT;
};

} // namespace

static int take_add_or_del(const OptArg &opt, CfgOptions &choices)
{
    (opt.code == OPT_ADD ? choices.add : choices.del) = true;
    if (choices.add && choices.del)
        return fail("ERROR: --%s and --%s conflict.\n", option_name(OPT_ADD), option_name(OPT_DEL));
    return 0;
}

static int report_file_and_ip()
{
    return fail("ERROR: Could not specify --%s and --%s.\n", option_name(OPT_FILE),
                option_name(OPT_IP));
}

static int take_files(const OptArg &opt, CfgOptions &choices)
{
    if (choices.file)
        return report_repeated_option(opt);
    if (choices.ip)
        return report_file_and_ip();
    choices.file = true;
    const size_t length = strlen(opt.arg);
    if (!choices.file_argument.assign(opt.arg) || !choices.file_names.reserve(length / 2 + 1))
        return fail("ERROR: Out of memory.\n");
    char *rest = choices.file_argument.data();
    while (const char *name = strsep(&rest, ","))
        if (*name != '\0')
            choices.file_names.append() = name;
    return choices.file_names.empty() ? report_invalid_argument(opt) : 0;
}

static int take_ip(const OptArg &opt, CfgOptions &choices)
{
    if (choices.ip)
        return report_repeated_option(opt);
    if (choices.file)
        return report_file_and_ip();
    choices.ip = true;
    Ipv4 setting[5];
    if (!parse_ip_dns_settings(opt.arg, setting[0], setting[1], setting[2], setting[3], setting[4]))
        return report_invalid_argument(opt);
    return tlv_append(choices.ip_items, CONFIG_ITEM_ADDRESS_SETTINGS, {},
                      {setting[0].octet, sizeof setting});
}

static int take_type(const OptArg &opt, CfgOptions &choices)
{
    const auto type = static_cast<uint8_t>(atoi(opt.arg));
    if (type > 1)
        return report_invalid_argument(opt);
    choices.kind = kind_of_type(type);
    return 0;
}

static int take_option(const OptArg &opt, CfgOptions &choices)
{
    switch (opt.code) {
    case OPT_ADD:
    case OPT_DEL:
        return take_add_or_del(opt, choices);
    case OPT_FILE:
        return take_files(opt, choices);
    case OPT_IP:
        return take_ip(opt, choices);
    case OPT_TYPE:
        return take_type(opt, choices);
    default:
        return choices.wtps.take(opt);
    }
}

static int report_unusable(OptionCode one, OptionCode other)
{
    return fail("ERROR: Could not use --%s when --%s is specified.\n", option_name(one),
                option_name(other));
}

// Without --file the devices are put under management or taken out of it.
static int manage(AcSession &session, const CfgOptions &choices)
{
    if (choices.add)
        return cfg_request_add(session, choices.wtps.list(), choices.ip_items);
    if (!choices.del)
        return report_missing_option(OPT_FILE);
    if (choices.ip)
        return report_unusable(OPT_IP, OPT_DEL);
    return cfg_request_delete(session, choices.wtps.list());
}

// All files are read and checked before anything else is.
static int configure(AcSession &session, const CfgOptions &choices, int wait)
{
    const uint32_t count = choices.file_names.size();
    const bool several = count > 1;
    if (several && count != choices.wtps.list().size())
        return fail("ERROR: File number is not equal to MAC number when multiple files are "
                    "specified\n");
    TlvBuffer lists;
    for (const char *name : choices.file_names)
        if (config_file_load(name, choices.kind, lists) != 0 || tlv_end(lists) != 0)
            return 1;
    if (choices.add)
        return report_unusable(OPT_FILE, OPT_ADD);
    if (choices.del)
        return report_unusable(OPT_FILE, OPT_DEL);
    const int status = cfg_request_set(
        session,
        {choices.wtps.list(), choices.kind, static_cast<uint32_t>(wait), several, {lists.bytes()}});
    tlv_free(lists);
    return status;
}

static int cfg_command(AcSession &session, const OptArgList &opts)
{
    CfgOptions choices;
    if (check_options(CFG_COMMAND, opts,
                      [&](const OptArg &opt) { return take_option(opt, choices); }) != 0)
        return 1;
    if (!choices.wtps.given())
        return report_missing_option(OPT_MAC);
    return choices.file ? configure(session, choices, opts.number(OPT_WAIT))
                        : manage(session, choices);
}

const CommandSpec CFG_COMMAND = {
    cfg_command,
    "cfg",
    "Update WTP setting",
    {"--mac MAC\t\tthe wtp's mac address list",
     "--type TYPE\t\tspecify the type of cfg file. 0:AP 1:Switch",
     "--add\t\t\tadd the wtp to management list", "--del\t\t\tdelete the wtp from management list",
     "--file FILE\t\tspecify the json config file",
     "--ip IP/MSK/GW/DNS1/DNS2 specify ip setting when the wtp joins",
     "--wait SEC\t\thow many seconds to wait before applying config"},
    {{OPT_MAC}, {OPT_ADD}, {OPT_DEL}, {OPT_FILE}, {OPT_IP}, {OPT_TYPE, "0 1"}, {OPT_WAIT}},
};
