// SPDX-License-Identifier: MIT
#include "sim/upgrade.h"

#include "proto/result_code.h"

#include <chrono>

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
    device.upgrade_started = std::chrono::steady_clock::now();
    wtp.upg_img = 1;
    wtp.upg_state = UPGRADE_WAITING;
    wtp.sub_state = WTP_SUB_WAITING;
    wtp.progress = 0;
    wtp.new_fw_ver = device.memory.copy(steps == 2 ? FIRMWARE_BETWEEN : FIRMWARE_LATEST);
    wtp.new_fw_img =
        device.memory.copy(std::string(wtp.model).append("-").append(wtp.new_fw_ver) + ".img");
    return RESULT_SUCCESS;
}

// The upgrade is over, with or without its version.
static void end_upgrade(Device &device, UpgradeState state, time_t now)
{
    WtpRecord &wtp = device.record;
    wtp.upg_state = state;
    wtp.upg_img = 0;
    wtp.sub_state = 0;
    if (state == UPGRADE_DONE) {
        wtp.progress = 100;
        wtp.sw_ver = wtp.new_fw_ver;
        device.started = exact_time();
        wtp.change_time = static_cast<uint32_t>(now);
    }
    wtp.new_fw_ver = std::string_view();
    wtp.new_fw_img = std::string_view();
}

void advance_upgrade(Device &device, time_t now)
{
    WtpRecord &wtp = device.record;
    const UpgradeCourse::Kind course = device.course.kind;
    if (course == UpgradeCourse::timed)
        return;
    switch (static_cast<UpgradeState>(wtp.upg_state)) {
    case UPGRADE_WAITING:
        wtp.upg_state = UPGRADE_LOADING;
        wtp.sub_state = WTP_SUB_UPGRADING;
        wtp.progress = 40;
        break;
    case UPGRADE_LOADING:
        if (course == UpgradeCourse::hangs)
            break;
        wtp.upg_state = UPGRADE_WRITING;
        wtp.progress = 80;
        break;
    case UPGRADE_WRITING:
        end_upgrade(device, course == UpgradeCourse::fails ? UPGRADE_FAILED : UPGRADE_DONE, now);
        break;
    case UPGRADE_NONE:
    case UPGRADE_DONE:
    case UPGRADE_FAILED:
        break;
    }
}

// Waits, loads, writes and restarts, a quarter of the time each.
void follow_clock(Device &device, time_t now)
{
    WtpRecord &wtp = device.record;
    if (wtp.upg_img == 0)
        return;
    const std::chrono::duration<double> taken =
        std::chrono::steady_clock::now() - device.upgrade_started;
    const double part = taken.count() / device.course.seconds;
    const bool restarts = part >= 0.75 && part < 1;
    set_state(wtp, restarts ? WTP_OFFLINE : WTP_ONLINE, now);
    if (part >= 1) {
        end_upgrade(device, UPGRADE_DONE, now);
        return;
    }
    wtp.upg_state = part < 0.25 ? UPGRADE_WAITING : part < 0.5 ? UPGRADE_LOADING : UPGRADE_WRITING;
    wtp.sub_state = part < 0.25 ? WTP_SUB_WAITING : restarts ? 0 : WTP_SUB_UPGRADING;
    wtp.progress = static_cast<uint8_t>(part * 100);
}
