// SPDX-License-Identifier: MIT
#include "config/cfg_request.h"

#include "proto/reply_reader.h"
#include "proto/request_writer.h"
#include "proto/result_code.h"

// Sends what is gathered and reads the result byte of one device; false when either fails.
static bool read_result(AcSession &session, RequestWriter &request, const Mac &mac, uint8_t &code)
{
    if (request.finish() != 0)
        return false;
    ReplyReader reply(session);
    reply.read(code);
    if (!reply.ok())
        return false;
    print_result_code(code, mac, session.messages);
    return true;
}

int cfg_request_add(AcSession &session, const MacList &wtps, const TlvBuffer &items)
{
    int status = 0;
    for (const Mac &mac : wtps) {
        RequestWriter request(session, COMMAND_ADD);
        request.mac(mac);
        request.begin_length();
        request.bytes(items.wire.data(), items.wire_size());
        request.end_length();
        uint8_t code;
        if (!read_result(session, request, mac, code) || code == RESULT_TOO_MANY_DEVICES)
            return 1;
        if (code != RESULT_SUCCESS)
            status = 1;
    }
    return status;
}

int cfg_request_delete(AcSession &session, const MacList &wtps)
{
    int status = 0;
    for (const Mac &mac : wtps) {
        RequestWriter request(session, COMMAND_DELETE);
        request.mac(mac);
        uint8_t code;
        if (!read_result(session, request, mac, code))
            return 1;
        if (code != RESULT_SUCCESS)
            status = 1;
    }
    return status;
}

static int read_answers(AcSession &session, const MacList &wtps)
{
    ReplyReader reply(session);
    int status = 0;
    for (const Mac &mac : wtps) {
        const auto code = reply.number<uint8_t>();
        print_result_code(code, mac, session.messages);
        if (code != RESULT_SUCCESS)
            status = 1;
        char message[UINT8_MAX + 1];
        const auto length = reply.number<uint8_t>();
        reply.take(message, length);
        message[length] = '\0';
        if (!reply.ok())
            return 1;
        if (length > 0)
            session.messages.report("Msg: %s.\n", message);
    }
    return status;
}

int cfg_request_set(AcSession &session, const MacList &wtps, DeviceKind kind, int wait,
                    bool several, const Table<TlvBuffer> &lists)
{
    uint64_t length = 6 * uint64_t{wtps.size()} + 8;
    for (const TlvBuffer &items : lists)
        length += items.wire_size() + 2;
    RequestWriter request(session, COMMAND_SET_CONFIG);
    if (length > UINT32_MAX)
        request.refuse("bytes", length, UINT32_MAX);
    request.u32(static_cast<uint32_t>(length));
    request.mac_list(wtps);
    request.u8(kind);
    request.u32(static_cast<uint32_t>(wait));
    request.u8(several);
    for (const TlvBuffer &items : lists) {
        request.bytes(items.wire.data(), items.wire_size());
        request.u16(0);
    }
    if (request.finish() != 0)
        return 1;
    return read_answers(session, wtps);
}
