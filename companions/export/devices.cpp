// SPDX-License-Identifier: MIT
#include "export/devices.h"

#include <algorithm>
#include <cstdio>
#include <fnmatch.h>
#include <vector>

Devices::Devices(const ExportSettings &settings, uint32_t filter) : settings_(settings)
{
    Connection(settings).fetch(list_, filter, settings.macs);
}

bool Devices::is_wanted(const WtpRecord &wtp) const
{
    return settings_.name == nullptr ||
           fnmatch(settings_.name, std::string(wtp.name).c_str(), 0) == 0;
}

bool Devices::all_found()
{
    if (settings_.macs.empty())
        return true;
    std::vector<Mac> found;
    for (const WtpRecord *wtp = first_wtp(list_, WtpPart::basics); wtp != nullptr;
         wtp = next_wtp(list_))
        found.push_back(wtp->mac);
    std::sort(found.begin(), found.end());
    bool all = true;
    for (const Mac &mac : settings_.macs) {
        if (std::binary_search(found.begin(), found.end(), mac))
            continue;
        fprintf(stderr, "zov-export: the controller knows no device %s\n", mac_to_text(mac));
        all = false;
    }
    return all;
}

const char *kind_name(const WtpRecord &wtp)
{
    return wtp.wtp_type == DEVICE_ACCESS_POINT ? "access_point"
           : wtp.wtp_type == DEVICE_SWITCH     ? "switch"
                                               : "other";
}

uint32_t count_stations(const WtpRecord &wtp)
{
    uint32_t count = 0;
    for (const RadioInfo &radio : wtp.radio)
        for (const WlanInfo &wlan : radio.wlan)
            count += wlan.sta.size();
    return count;
}

std::string state_name(const WtpRecord &wtp)
{
    if (wtp.state == WTP_ONLINE)
        return "online";
    if (wtp.state == WTP_OFFLINE)
        return "offline";
    return "state " + std::to_string(wtp.state);
}
