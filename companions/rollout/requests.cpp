// SPDX-License-Identifier: MIT
#include "rollout/requests.h"

#include "common/stop.h"
#include "ops/fwlist.h"
#include "proto/request_writer.h"

#include <algorithm>
#include <new>

static void ask_for_some(const Endpoint &endpoint, const MacList &macs, FirmwareSteps &known)
{
    Connection connection(endpoint);
    if (send_request(connection.session(), FirmwareListRequest{macs}) != 0)
        connection.fail();
    ReplyReader reply(connection.session());
    for (const Mac &mac : macs)
        known.codes[mac] = reply.number<uint8_t>();
    for (const unsigned steps : {1U, 2U}) {
        MacList listed;
        read_fwlist(reply, listed);
        for (const Mac &mac : listed)
            known.steps[mac] = steps;
    }
    if (!reply.ok())
        connection.fail();
}

FirmwareSteps ask_firmware_steps(const Endpoint &endpoint, const std::vector<Mac> &macs)
{
    FirmwareSteps known;
    for (size_t first = 0; first < macs.size(); first += REQUEST_MAX)
        ask_for_some(endpoint, to_mac_list(macs, first, std::min(REQUEST_MAX, macs.size() - first)),
                     known);
    return known;
}

std::vector<uint8_t> start_upgrades(const Endpoint &endpoint,
                                    const std::function<std::vector<Mac>()> &choose,
                                    uint32_t period, uint32_t type)
{
    Connection connection(endpoint);
    std::vector<uint8_t> codes;
    try {
        {
            const StopHeldBack no_signal;
            const std::vector<Mac> macs = choose();
            if (macs.empty())
                return codes;
            codes.resize(macs.size());
            const MacList list = to_mac_list(macs, 0, macs.size());
            if (send_request(connection.session(), UpgradeRequest{list, period, type}) != 0)
                connection.fail();
        }
        ReplyReader reply(connection.session());
        reply.take(codes.data(), codes.size());
        if (!reply.ok())
            connection.fail();
        return codes;
    } catch (const Failure &failure) {
        throw Unanswered(failure.what());
    }
}
