// SPDX-License-Identifier: MIT
// The controller's answers about radios and their stations.
#include "sim/controller.h"

#include <algorithm>

void Controller::answer(const ScanRequest &request, std::string &reply)
{
    for_each(request.wtps, reply, [&](Device &device) -> uint8_t {
        return request.band < device.record.radio.size() ? RESULT_SUCCESS : RESULT_NOT_SUPPORTED;
    });
}

void Controller::answer(const BackgroundScanRequest &request, std::string &reply)
{
    const uint32_t count = for_each_radio(request.band, [](RadioInfo &) {});
    put(reply, count);
    reply.append(count, '\0');
}

void Controller::answer(const AutoChannelRequest &request, std::string &)
{
    int32_t channel = request.band == 0 ? 1 : 36;
    if (request.enable)
        for_each_radio(request.band, [&](RadioInfo &radio) {
            radio.cur_cfg.channel = channel;
            channel += request.band == 0 ? 5 : 4;
            if (channel > (request.band == 0 ? 11 : 64))
                channel = request.band == 0 ? 1 : 36;
        });
}

void Controller::answer(const AutoTxPowerRequest &request, std::string &)
{
    if (request.enable)
        for_each_radio(request.band, [](RadioInfo &radio) {
            radio.cur_cfg.tx_power = radio.max_tx_power * 3 / 4;
            radio.cur_cfg.tx_power_percent = 75;
        });
}

static void drop_stations(ArrayView<StationInfo> &stations, Macs gone)
{
    ArrayView<StationInfo> rest(stations.begin()); // in the same memory
    for (const StationInfo sta : stations)
        if (std::find(gone.begin(), gone.end(), sta.mac) == gone.end())
            rest.append() = sta;
    stations = rest;
}

void Controller::answer(const KickRequest &request, std::string &reply)
{
    const unsigned wlan = request.wlan;
    for_each(request.wtps, reply, [&](Device &device) -> uint8_t {
        ArrayView<RadioInfo> &radios = device.record.radio;
        if (request.band >= radios.size() || wlan == 0 || wlan > radios[request.band].wlan.size())
            return RESULT_NOT_SUPPORTED;
        drop_stations(radios[request.band].wlan[wlan - 1].sta, request.stations);
        return RESULT_SUCCESS;
    });
}
