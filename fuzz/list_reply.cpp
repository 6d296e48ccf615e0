// SPDX-License-Identifier: MIT
// Fuzz target: the reply to a device list request, through decoding and all printers.
#include "device/wtp_list.h"
#include "proto/byte_source.h"
#include "report/json_report.h"
#include "report/text_report.h"
#include "util/output.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

// The reports and messages of the target go nowhere.
static const bool quiet = [] {
    const int null = open("/dev/null", O_WRONLY);
    return dup2(null, STDOUT_FILENO) >= 0;
}();

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    ByteSource source;
    source.at = data;
    source.end = data + size;
    WtpList list;
    if (receive_wtp_list(source, list) == 0) {
        print_wtp_brief(list);
        print_wtp_details(list, {true, false});
        print_wtp_details(list, {false, true});
        print_wtp_json(list, {true, false});
        print_wtp_json(list, {false, true});
        standard_output.flush();
    } else if (list.reply.size() != 0) {
        abort();
    }
    return quiet ? 0 : 1;
}
