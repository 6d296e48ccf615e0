// SPDX-License-Identifier: MIT
// The controller's answers about radios and their stations.
#include "sim/controller.h"

#include <algorithm>

void Controller::scan(Taker &in, std::string &reply)
{
    in.number<uint16_t>();
    const auto band = in.number<uint8_t>();
    for_each(in.mac_list(), reply, [=](Device &device) -> uint8_t {
        return band < device.record.radio.size() ? RESULT_SUCCESS : RESULT_NOT_SUPPORTED;
    });
}

namespace {

struct Periodic {
    uint32_t band;
    bool enable;
};

Periodic read_periodic(Taker &in)
{
    in.number<uint16_t>();
    const auto band = in.number<uint32_t>();
    return {band, in.number<uint8_t>() != 0};
}

} // namespace

void Controller::background_scan(Taker &in, std::string &reply)
{
    const Periodic asked = read_periodic(in);
    const uint32_t count = for_each_radio(asked.band, [](RadioInfo &) {});
    put(reply, count);
    reply.append(count, '\0');
}

void Controller::auto_channel(Taker &in, std::string &)
{
    const Periodic asked = read_periodic(in);
    int32_t channel = asked.band == 0 ? 1 : 36;
    if (asked.enable)
        for_each_radio(asked.band, [&](RadioInfo &radio) {
            radio.cur_cfg.channel = channel;
            channel += asked.band == 0 ? 5 : 4;
            if (channel > (asked.band == 0 ? 11 : 64))
                channel = asked.band == 0 ? 1 : 36;
        });
}

void Controller::auto_tx_power(Taker &in, std::string &)
{
    const Periodic asked = read_periodic(in);
    if (asked.enable)
        for_each_radio(asked.band, [](RadioInfo &radio) {
            radio.cur_cfg.tx_power = radio.max_tx_power * 3 / 4;
            radio.cur_cfg.tx_power_percent = 75;
        });
}

static void drop_stations(Rows<StationInfo> &stations, const std::vector<Mac> &clients)
{
    Rows<StationInfo> rest(stations.begin()); // in the same room
    for (const StationInfo sta : stations)
        if (std::find(clients.begin(), clients.end(), sta.mac) == clients.end())
            rest.append() = sta;
    stations = rest;
}

void Controller::kick(Taker &in, std::string &reply)
{
    in.number<uint16_t>();
    const auto band = in.number<uint8_t>();
    const auto wlan = in.number<uint8_t>(); // from 1, as the reports number them
    const std::vector<Mac> clients = in.mac_list();
    for_each(in.mac_list(), reply, [&](Device &device) -> uint8_t {
        Rows<RadioInfo> &radios = device.record.radio;
        if (band >= radios.size() || wlan == 0 || wlan > radios[band].wlan.size())
            return RESULT_NOT_SUPPORTED;
        drop_stations(radios[band].wlan[wlan - 1U].sta, clients);
        return RESULT_SUCCESS;
    });
}
