// SPDX-License-Identifier: MIT
#include "upgrade.h"

#include "proto/result_code.h"

#include <cstring>

unsigned upgrade_steps(const Device &device)
{
    const std::string_view version = device.record.sw_ver;
    if (version == FIRMWARE_LEGACY)
        return 2;
    return version == FIRMWARE_LATEST ? 0 : 1;
}

uint8_t start_upgrade(Device &device)
{
    WtpRecord &wtp = device.record;
    const unsigned steps = upgrade_steps(device);
    if (steps == 0)
        return RESULT_NO_IMAGE;
    if (wtp.upg_img != 0)
        return RESULT_BUSY;
    wtp.upg_img = 1;
    wtp.upg_state = UPGRADE_WAITING;
    wtp.sub_state = WTP_SUB_WAITING;
    wtp.progress = 0;
    wtp.new_fw_ver = device.memory.keep(steps == 2 ? FIRMWARE_BETWEEN : FIRMWARE_LATEST);
    wtp.new_fw_img =
        device.memory.keep(std::string(wtp.model).append("-").append(wtp.new_fw_ver) + ".img");
    return RESULT_SUCCESS;
}

void advance_upgrade(Device &device, time_t now)
{
    WtpRecord &wtp = device.record;
    switch (wtp.upg_state) {
    case UPGRADE_WAITING:
        wtp.upg_state = UPGRADE_LOADING;
        wtp.sub_state = WTP_SUB_UPGRADING;
        wtp.progress = 40;
        break;
    case UPGRADE_LOADING:
        wtp.upg_state = UPGRADE_WRITING;
        wtp.progress = 80;
        break;
    case UPGRADE_WRITING:
        wtp.upg_state = UPGRADE_DONE;
        wtp.upg_img = 0;
        wtp.sub_state = 0;
        wtp.progress = 100;
        wtp.sw_ver = wtp.new_fw_ver;
        wtp.new_fw_ver = std::string_view();
        wtp.new_fw_img = std::string_view();
        device.started = now;
        break;
    default:
        break;
    }
}
