// SPDX-License-Identifier: MIT
#include "export/devices.h"

#include "common/plain_text.h"

#include <cstdio>
#include <new>

// The controller is asked for the addresses alone when nothing else chooses.
Devices::Devices(const ExportSettings &settings, uint32_t filter) : settings_(settings)
{
    MacList macs;
    if (settings.names.empty() && !settings.all_managed) {
        if (!macs.reserve(settings.macs.size()))
            throw std::bad_alloc();
        for (const auto &[mac, place] : settings.macs)
            macs.append() = mac;
    }
    Connection(settings).fetch(list_, filter, macs);
}

bool Devices::all_found()
{
    SelectionCheck check(settings_);
    for (const WtpRecord *wtp = first_wtp(list_, WtpPart::basics); wtp != nullptr;
         wtp = next_wtp(list_))
        check.saw(*wtp);
    for (const Mac &mac : check.missing_macs())
        fprintf(stderr, "zov-export: the controller knows no device %s\n", mac_to_text(mac));
    for (const std::string &name : check.unmatched_names())
        fprintf(stderr, "zov-export: no device has a name that matches '%s'\n",
                plain_text(name).c_str());
    return check.missing_macs().empty() && check.unmatched_names().empty();
}

bool Devices::is_repeated(const Mac &mac)
{
    if (seen_.insert(mac).second)
        return false;
    fprintf(stderr, "zov-export: the controller lists %s again, which is left out\n",
            mac_to_text(mac));
    has_repeated_ = true;
    return true;
}

uint32_t count_stations(const WtpRecord &wtp)
{
    uint32_t count = 0;
    for (const RadioInfo &radio : wtp.radio)
        for (const WlanInfo &wlan : radio.wlan)
            count += wlan.sta.size();
    return count;
}
