// SPDX-License-Identifier: MIT
#include "config/cfg.h"

#include "cli/option_checks.h"
#include "config/cfg_request.h"
#include "config/config_file.h"
#include "util/ipv4.h"
#include "util/output.h"
#include "util/text.h"

#include <cstdlib>
#include <cstring>

enum : uint32_t { ITEM_IP_SETTING = 3 };

namespace {

struct Choices {
    MacOption wtps;
    bool add = false, del = false; // not both
    bool ip = false, file = false; // not both
    TlvBuffer ip_items;
    Text file_argument;             // cut at its commas
    Table<const char *> file_names; // within file_argument, not empty when `file`
    DeviceKind kind = DEVICE_ACCESS_POINT;
    int wait = 0;
};

} // namespace

static int take_add_or_del(const OptArg &opt, Choices &choices)
{
    (opt.code == OPT_ADD ? choices.add : choices.del) = true;
    if (choices.add && choices.del)
        return fail("ERROR: --%s and --%s conflict.\n", option_name(OPT_ADD), option_name(OPT_DEL));
    return 0;
}

static int file_or_ip()
{
    return fail("ERROR: Could not specify --%s and --%s.\n", option_name(OPT_FILE),
                option_name(OPT_IP));
}

static int take_files(const OptArg &opt, Choices &choices)
{
    if (choices.file)
        return repeated_option(opt);
    if (choices.ip)
        return file_or_ip();
    choices.file = true;
    const size_t length = strlen(opt.arg);
    if (!choices.file_argument.assign(opt.arg) || !choices.file_names.reserve(length / 2 + 1))
        return fail("ERROR: Out of memory.\n");
    char *rest = choices.file_argument.data();
    while (const char *name = strsep(&rest, ","))
        if (*name != '\0')
            choices.file_names.append() = name;
    return choices.file_names.empty() ? invalid_argument(opt) : 0;
}

static int take_ip(const OptArg &opt, Choices &choices)
{
    if (choices.ip)
        return repeated_option(opt);
    if (choices.file)
        return file_or_ip();
    choices.ip = true;
    Ipv4 setting[5];
    if (!parse_ip_dns_settings(opt.arg, setting[0], setting[1], setting[2], setting[3], setting[4]))
        return invalid_argument(opt);
    return tlv_append(choices.ip_items, ITEM_IP_SETTING, 0, nullptr, sizeof setting, setting);
}

static int take_type(const OptArg &opt, Choices &choices)
{
    const auto type = static_cast<uint8_t>(atoi(opt.arg));
    if (type > 1)
        return invalid_argument(opt);
    choices.kind = type == 1 ? DEVICE_SWITCH : DEVICE_ACCESS_POINT;
    return 0;
}

static int read_option(const OptArg &opt, Choices &choices)
{
    switch (opt.code) {
    case OPT_MAC:
        return choices.wtps.take(opt) ? 0 : 1;
    case OPT_ADD:
    case OPT_DEL:
        return take_add_or_del(opt, choices);
    case OPT_FILE:
        return take_files(opt, choices);
    case OPT_IP:
        return take_ip(opt, choices);
    case OPT_TYPE:
        return take_type(opt, choices);
    case OPT_WAIT:
        choices.wait = atoi(opt.arg);
        return 0;
    default:
        return unknown_option(opt);
    }
}

static int could_not_use(int one, int other)
{
    return fail("ERROR: Could not use --%s when --%s is specified.\n", option_name(one),
                option_name(other));
}

// Without --file the devices are put under management or taken out of it.
static int manage(AcSession &session, const Choices &choices)
{
    if (choices.add)
        return cfg_request_add(session, choices.wtps.list(), choices.ip_items);
    if (!choices.del)
        return require_option(OPT_FILE);
    if (choices.ip)
        return could_not_use(OPT_IP, OPT_DEL);
    return cfg_request_delete(session, choices.wtps.list());
}

// All files are read and checked before anything else is.
static int configure(AcSession &session, const Choices &choices)
{
    const uint32_t count = choices.file_names.size();
    const bool several = count > 1;
    if (several && count != choices.wtps.list().size())
        return fail("ERROR: File number is not equal to MAC number when multiple files are "
                    "specified\n");
    Table<TlvBuffer> lists;
    if (!lists.reserve(count))
        return fail("ERROR: Out of memory.\n");
    for (const char *name : choices.file_names)
        if (config_file_load(name, choices.kind, lists.append()) != 0)
            return 1;
    if (choices.add)
        return could_not_use(OPT_FILE, OPT_ADD);
    if (choices.del)
        return could_not_use(OPT_FILE, OPT_DEL);
    return cfg_request_set(session, choices.wtps.list(), choices.kind, choices.wait, several,
                           lists);
}

int cfg_command(AcSession &session, const OptArgList &opts)
{
    Choices choices;
    for (const OptArg &opt : opts)
        if (read_option(opt, choices) != 0)
            return 1;
    if (!choices.wtps.given())
        return require_option(OPT_MAC);
    return choices.file ? configure(session, choices) : manage(session, choices);
}
