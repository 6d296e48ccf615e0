// SPDX-License-Identifier: MIT
// The devices that are to be exported.
#pragma once

#include "common/address_text.h"
#include "device/wtp_list.h"
#include "export/options.h"

#include <string>

class Devices {
public:
    // Asks the controller for them. Throws Failure as Connection does.
    Devices(const ExportSettings &settings, uint32_t filter);

    // Calls action(record) for each, in the controller's order. A record is gone after its call.
    template <class Action> void for_each(Action action)
    {
        for (const WtpRecord *wtp = first_wtp(list_, WtpPart::whole); wtp != nullptr;
             wtp = next_wtp(list_))
            if (is_wanted(*wtp))
                action(*wtp);
    }

    // Reports the addresses that were asked for and that the controller does not know; true if
    // there are none.
    bool all_found();

private:
    bool is_wanted(const WtpRecord &wtp) const;

    const ExportSettings &settings_;
    WtpList list_;
};

// How devices are called in most formats.
const char *kind_name(const WtpRecord &wtp); // access_point, switch or other
uint32_t count_stations(const WtpRecord &wtp);
std::string state_name(const WtpRecord &wtp); // online, offline, or the controller's code
