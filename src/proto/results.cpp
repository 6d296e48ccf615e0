// SPDX-License-Identifier: MIT
#include "proto/results.h"

#include "proto/reply_reader.h"
#include "proto/result_code.h"

int read_device_results(ByteSource &source, Macs macs)
{
    ReplyReader reply(source);
    int status = 0;
    for (const Mac &mac : macs) {
        const auto code = reply.number<uint8_t>();
        if (!reply.ok())
            return 1;
        print_result_code(code, mac, source.messages);
        if (code != RESULT_SUCCESS)
            status = 1;
    }
    return status;
}

int read_counted_results(ByteSource &source)
{
    ReplyReader reply(source);
    int status = 0;
    for (auto missing = reply.number<int32_t>(); missing > 0 && reply.ok(); missing--)
        if (reply.number<uint8_t>() != RESULT_SUCCESS)
            status = 1;
    return reply.ok() ? status : 1;
}
