// SPDX-License-Identifier: MIT
// What the companion tools call the kinds and states of devices.
#pragma once

#include "device/wtp_list.h"

#include <string>

const char *kind_name(uint8_t wtp_type);      // access_point, switch or other
std::string state_name(const WtpRecord &wtp); // online, offline, or the controller's code

// Being upgraded, or waiting for it.
inline bool is_in_upgrade(const WtpRecord &wtp)
{
    return is_upgrading(wtp) || wtp.sub_state == WTP_SUB_WAITING;
}
