// SPDX-License-Identifier: MIT
// The devices that are to be exported.
#pragma once

#include "common/address_text.h"
#include "common/device_names.h"
#include "common/stop.h"
#include "device/wtp_list.h"
#include "export/options.h"

#include <set>
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
            if (check_stop(); settings_.includes(*wtp))
                action(*wtp);
    }

    // Reports the addresses that were asked for and that the controller does not know, and the
    // patterns that no name matches; true if there are none.
    bool all_found();

    // Whether a record of this address came before, which is reported: for what can hold one only.
    bool is_repeated(const Mac &mac);
    bool has_repeated() const { return has_repeated_; }

private:
    const ExportSettings &settings_;
    WtpList list_;
    std::set<Mac> seen_;
    bool has_repeated_ = false;
};

uint32_t count_stations(const WtpRecord &wtp);
