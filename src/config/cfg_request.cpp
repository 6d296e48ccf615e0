// SPDX-License-Identifier: MIT
#include "config/cfg_request.h"

#include "proto/reply_reader.h"
#include "proto/request_writer.h"
#include "proto/result_code.h"

// Sends a request about one device and reads its result byte; false when either fails.
template <class Request>
static bool request_result(AcSession &session, const Request &request, uint8_t &code)
{
    if (send_request(session, request) != 0)
        return false;
    ReplyReader reply(session);
    reply.read(code);
    if (!reply.ok())
        return false;
    print_result_code(code, request.wtp, session.messages);
    return true;
}

int cfg_request_add(AcSession &session, Macs wtps, const TlvBuffer &items)
{
    int status = 0;
    for (const Mac &mac : wtps) {
        uint8_t code;
        if (!request_result(session, AddRequest{mac, {items.bytes()}}, code) ||
            code == RESULT_TOO_MANY_DEVICES)
            return 1;
        if (code != RESULT_SUCCESS)
            status = 1;
    }
    return status;
}

int cfg_request_delete(AcSession &session, Macs wtps)
{
    int status = 0;
    for (const Mac &mac : wtps) {
        uint8_t code;
        if (!request_result(session, DeleteRequest{mac}, code))
            return 1;
        if (code != RESULT_SUCCESS)
            status = 1;
    }
    return status;
}

static int read_answers(AcSession &session, Macs wtps)
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

int cfg_request_set(AcSession &session, const SetConfigRequest &request)
{
    return send_request(session, request) != 0 ? 1 : read_answers(session, request.wtps);
}
