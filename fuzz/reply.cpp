// SPDX-License-Identifier: MIT
// Fuzz target: the reply to each command, through its reader and its printer. The first byte
// chooses the command line. A reply that is whole and loses its last byte is refused, and nothing
// is printed.
#include "cli/command_table.h"
#include "fuzz/fuzz.h"
#include "util/output.h"

#include <cstring>
#include <iterator>
#include <unistd.h>
#include <vector>

// Standard output is counted, messages are dropped, requests go nowhere; the file that a reply to
// `mem` names is the rest of the input, and stays.
static size_t printed;
static Input record_file;

extern "C" {
ssize_t __wrap_write(int, const void *, size_t size)
{
    printed += size;
    return static_cast<ssize_t>(size);
}
ssize_t __wrap_send(int, const void *, size_t size, int)
{
    return static_cast<ssize_t>(size);
}
FILE *__wrap_fopen(const char *, const char *)
{
    return record_file.size == 0
               ? nullptr
               : fmemopen(const_cast<uint8_t *>(record_file.at), record_file.size, "r");
}
int __wrap_unlink(const char *)
{
    return 0;
}
}

static char MACS[] = "02:00:00:00:00:01,02:00:00:00:00:02", ONE[] = "1", BAND[] = "5g",
            TEXT[] = "x";
static const struct {
    const CommandSpec *command;
    std::vector<OptArg> options;
} LINES[] = {
    {&AC_COMMAND, {}},
    {&AC_COMMAND, {{OPT_JSON, nullptr}}},
    {&ONLINE_COMMAND, {}},
    {&WTPFLAG_COMMAND, {{OPT_FLAG, ONE}}},
    {&WTPS_COMMAND, {}},
    {&WTPS_COMMAND, {{OPT_JSON, nullptr}, {OPT_PASSWORD, nullptr}}},
    {&WTPS_COMMAND, {{OPT_BREIF, nullptr}}},
    {&WTPS_COMMAND, {{OPT_FWRESULT, nullptr}}},
    {&CFG_COMMAND, {{OPT_MAC, MACS}, {OPT_DEL, nullptr}}},
    {&UPG_COMMAND, {{OPT_MAC, MACS}}},
    {&RST_COMMAND, {{OPT_MAC, MACS}}},
    {&SCAN_COMMAND, {{OPT_MAC, MACS}, {OPT_RADIO, BAND}}},
    {&BGSCAN_COMMAND, {{OPT_RADIO, BAND}, {OPT_ENABLE, ONE}}},
    {&AUTOCH_COMMAND, {{OPT_RADIO, BAND}, {OPT_ENABLE, ONE}}},
    {&AUTOTP_COMMAND, {{OPT_RADIO, BAND}, {OPT_ENABLE, ONE}}},
    {&INITFW_COMMAND, {}},
    {&SH_COMMAND, {{OPT_MAC, MACS}, {OPT_CMD, TEXT}}},
    {&FWLIST_COMMAND, {{OPT_MAC, MACS}}},
    {&MEM_COMMAND, {}},
};

static bool is_list(const CommandSpec *command)
{
    return command == &WTPS_COMMAND || command == &ONLINE_COMMAND || command == &WTPFLAG_COMMAND;
}

// Runs a command on a reply of so many bytes; `taken` of them were read.
static int run(const uint8_t *bytes, size_t size, uint8_t line, size_t &taken)
{
    static AcSession session;
    OptArgList opts;
    for (const OptArg &option : LINES[line].options)
        opts.rows[opts.count++] = option;
    session.at = bytes;
    session.end = bytes + size;
    session.messages.take = [](void *, Cause, int, const char *, va_list) {};
    printed = 0;
    const int status = LINES[line].command->handler(session, opts);
    standard_output.flush();
    taken = static_cast<size_t>(session.at - bytes);
    return status;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static FILE *const quiet = freopen("/dev/null", "w", stdout);
    PROMISE(quiet != nullptr);
    Input input{data, size};
    const uint8_t line = input.byte() % std::size(LINES);
    record_file = {nullptr, 0};
    if (LINES[line].command == &MEM_COMMAND && input.size > 2) {
        const size_t reply = size_t{2} + (size_t{input.at[0]} << 8 | input.at[1]);
        if (reply < input.size)
            record_file = {input.at + reply, input.size - reply};
    }
    size_t taken, again;
    const int status = run(input.at, input.size, line, taken);
    if (status != 0 || taken == 0 || is_list(LINES[line].command))
        return 0;
    PROMISE(run(input.at, taken - 1, line, again) == 1);
    PROMISE(printed == 0);
    return 0;
}
