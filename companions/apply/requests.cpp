// SPDX-License-Identifier: MIT
#include "apply/requests.h"

#include "common/stop.h"
#include "proto/reply_reader.h"
#include "proto/request_writer.h"

static std::vector<SetAnswer> read_answers(Connection &connection, size_t devices)
{
    ReplyReader reply(connection.session());
    std::vector<SetAnswer> answers(devices);
    for (SetAnswer &answer : answers) {
        answer.code = reply.number<uint8_t>();
        answer.message.resize(reply.number<uint8_t>());
        reply.take(answer.message.data(), answer.message.size());
    }
    if (!reply.ok())
        connection.fail();
    return answers;
}

std::vector<SetAnswer>
set_configurations(const Endpoint &endpoint, DeviceKind kind,
                   const std::function<std::vector<Mac>()> &choose,
                   const std::function<std::string_view(const Mac &)> &items_of)
{
    Connection connection(endpoint);
    try {
        size_t devices = 0;
        {
            const StopHeldBack no_signal;
            const std::vector<Mac> macs = choose();
            if (macs.empty())
                return {};
            devices = macs.size();
            std::string lists;
            for (const Mac &mac : macs)
                lists += items_of(mac);
            const MacList list = to_mac_list(macs, 0, devices);
            if (send_request(connection.session(),
                             SetConfigRequest{list, kind, 0, devices > 1, {lists}}) != 0)
                connection.fail();
        }
        return read_answers(connection, devices);
    } catch (const Failure &failure) {
        throw Unanswered(failure.what());
    }
}
