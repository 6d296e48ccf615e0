// SPDX-License-Identifier: MIT
#include "common/device_names.h"

const char *kind_name(uint8_t wtp_type)
{
    return wtp_type == DEVICE_ACCESS_POINT ? "access_point"
           : wtp_type == DEVICE_SWITCH     ? "switch"
                                           : "other";
}

std::string state_name(const WtpRecord &wtp)
{
    if (wtp.state == WTP_ONLINE)
        return "online";
    if (wtp.state == WTP_OFFLINE)
        return "offline";
    return "state " + std::to_string(wtp.state);
}
