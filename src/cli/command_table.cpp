// SPDX-License-Identifier: MIT
#include "cli/command_table.h"

#include "acctl/exit.h"
#include "acctl/kill.h"
#include "config/cfg.h"
#include "ops/cac.h"
#include "ops/dbg.h"
#include "ops/fwlist.h"
#include "ops/initfw.h"
#include "ops/kick.h"
#include "ops/mem.h"
#include "ops/nodc.h"
#include "ops/periodic.h"
#include "ops/rst.h"
#include "ops/scan.h"
#include "ops/sh.h"
#include "ops/upg.h"
#include "report/ac.h"
#include "report/online.h"
#include "report/wtpflag.h"
#include "report/wtps.h"
#include "util/output.h"

#include <cstring>

static const char *const NO_HELP[] = {nullptr};

static const char *const AC_HELP[] = {
    "--json\t\t\tprint in json format",
    nullptr,
};

static const char *const WTPS_HELP[] = {
    "--json\t\t\tprint in json format",
    "--managed\t\tprint managed wtps only",
    "--unmanaged\t\tprint unmanaged wtps only",
    "--join\t\t\tprint joined wtps only",
    "--password\t\tprint password MD5",
    "--mac MAC\t\tprint the wtp specified by mac address list",
    "--fwresult\t\tprint the result of upgrading firmware",
    "--breif\t\t\tprint a breif list",
    "--no_cfg\t\tfilter out configuration",
    "--basic\t\t\tprint wtp's basic info",
    "--no_stainf\t\tfilter out station info",
    nullptr,
};

static const char *const CFG_HELP[] = {
    "--mac MAC\t\tthe wtp's mac address list",
    "--type TYPE\t\tspecify the type of cfg file. 0:AP 1:Switch",
    "--add\t\t\tadd the wtp to management list",
    "--del\t\t\tdelete the wtp from management list",
    "--file FILE\t\tspecify the json config file",
    "--ip IP/MSK/GW/DNS1/DNS2 specify ip setting when the wtp joins",
    "--wait SEC\t\thow many seconds to wait before applying config",
    nullptr,
};

static const char *const UPG_HELP[] = {
    "--mac MAC\t\tthe wtp's mac address list",
    "--period SEC\t\toffline timeout value for upgrading",
    nullptr,
};

static const char *const RST_HELP[] = {
    "--mac MAC\t\tthe wtp's mac address list",
    "--factory\t\treset to factory settings",
    "--wait SEC\t\thow many seconds to wait before reset",
    nullptr,
};

static const char *const MEM_HELP[] = {
    "--all\t\t\tlist every memory info instead of a summary",
    nullptr,
};

static const char *const INITFW_HELP[] = {
    "--fwstat\t\tlist initialize WTPs status of firmware",
    nullptr,
};

static const char *const WTPFLAG_HELP[] = {
    "--mac MAC\t\tthe wtp's mac address list",
    "--flag\t\t\tlist Display the WTP information according to the following flag:",
    "\t\t\t1: show 2step upgrading AP infomation according to mac list",
    "\t\t\t2: show number of upgrading AP according to mac list",
    nullptr,
};

static const char *const SCAN_HELP[] = {
    "--mac MAC\t\tthe wtp's mac address list",
    "--radio 2g/5g\t\tthe radio type",
    nullptr,
};

static const char *const PERIODIC_HELP[] = {
    "--radio 2g/5g\t\tradio type",
    "--enable 0/1\t\tenable or not",
    "--period \t\tinterval in seconds",
    nullptr,
};

static const char *const KICK_HELP[] = {
    "--mac MAC\t\tthe wtp's mac address list",
    "--radio 2g/5g\t\tthe sitesurvey radio",
    "--wlan NUM\t\tthe wlan number",
    "--client MAC\t\tthe client's mac address list",
    nullptr,
};

static const char *const DBG_HELP[] = {
    "--enable 0/1\t\tenable or not",
    "--wtp\t\t\tset wtp debug log",
    "--mac MAC\t\t\tthe wtp's MAC to be set",
    nullptr,
};

static const char *const CAC_HELP[] = {
    "--mac MAC\t\tthe wtp's mac address list",
    "--ip ADDR\t\tAC IP address or host name",
    nullptr,
};

static const char *const SH_HELP[] = {
    "--mac MAC\t\tthe wtp's mac address list",
    "--cmd COMMAND\t\tshell commag\t\t",
    "--type 0/1/2\t\tspecify output type. 0:all 1:stdout 2:stderr",
    "--timeout SEC\t\tspecify how many seconds to wait for commmand execution",
    nullptr,
};

static const char *const FWLIST_HELP[] = {
    "--mac MAC\t\tthe wtp's mac address list",
    nullptr,
};

static constexpr CommandSpec COMMANDS[] = {
    {ac_command, "ac", "Print AC information", AC_HELP},
    {wtps_command, "wtps", "Print WTP information", WTPS_HELP},
    {cfg_command, "cfg", "Update WTP setting", CFG_HELP},
    {upg_command, "upg", "Upgrade WTP image", UPG_HELP},
    {rst_command, "rst", "Reset WTP", RST_HELP},
    {mem_command, "mem", "Show AC memory info", MEM_HELP},
    {initfw_command, "initfw", "Set Upgrading state", INITFW_HELP},
    {wtpflag_command, "wtpflag", "Show filter WTPs", WTPFLAG_HELP},
    {scan_command, "scan", "Do sitesurvey", SCAN_HELP},
    {bgscan_command, "bgscan", "Do background sitesurvey", PERIODIC_HELP},
    {autoch_command, "autoch", "Do auto channel selection", PERIODIC_HELP},
    {autotp_command, "autotp", "Do auto tx power", PERIODIC_HELP},
    {kick_command, "kick", "Kick wireless client", KICK_HELP},
    {online_command, "online", "Show the number of online wtps", NO_HELP},
    {exit_command, "exit", "Terminate AC", NO_HELP},
    {kill_command, "kill", "Kill AC", NO_HELP},
    {dbg_command, "dbg", "Enable/Disable Debug Log", DBG_HELP},
    {nodc_command, "nodc", "Disable AC discovery", NO_HELP},
    {cac_command, "cac", "Let WTP connect to specific AC", CAC_HELP},
    {sh_command, "sh", "Do shell command", SH_HELP},
    {fwlist_command, "fwlist", "Show firmware upgrade list", FWLIST_HELP},
};

const CommandSpec *find_command(const char *name)
{
    for (const CommandSpec &command : COMMANDS)
        if (strcmp(command.name, name) == 0)
            return &command;
    return nullptr;
}

void print_usage(const char *program)
{
    Output &out = standard_output;
    out.put("usage: ");
    out.put(program);
    out.put(" COMMAND [ARGS]\n\nAvailable COMMAND type:\n");
    for (const CommandSpec &command : COMMANDS) {
        out.put(command.name);
        out.put('\t');
        out.put(command.description);
        out.put('\n');
        for (const char *const *line = command.help; *line != nullptr; line++) {
            out.put('\t');
            out.put(*line);
            out.put('\n');
        }
    }
}
