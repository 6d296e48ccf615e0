// SPDX-License-Identifier: MIT
#include "rollout/plan.h"

#include "proto/result_code.h"
#include "rollout/requests.h"

#include <fnmatch.h>

enum : unsigned { STEPS_MAX = 2 };

Observation observation_of(const WtpRecord &wtp)
{
    Observation seen;
    seen.online = wtp.state == WTP_ONLINE;
    seen.busy = is_upgrading(wtp) || wtp.sub_state == WTP_SUB_WAITING;
    seen.progress = wtp.progress;
    seen.version = wtp.sw_ver;
    seen.announced = wtp.new_fw_ver;
    return seen;
}

static void skip(RollDevice &device, const char *reason)
{
    device.stage = UpgradeStage::skipped;
    device.reason = reason;
}

static RollDevice device_of(const WtpRecord &wtp)
{
    const Observation seen = observation_of(wtp);
    RollDevice device;
    device.mac = wtp.mac;
    device.name = wtp.name;
    device.from = seen.version;
    device.online = seen.online;
    if (seen.busy) {
        device.stage = UpgradeStage::upgrading;
        device.to = seen.announced;
    } else if (wtp.managed == 0) {
        skip(device, "not under management");
    } else if (!seen.online) {
        skip(device, "offline");
    }
    return device;
}

static bool is_chosen(const RolloutSettings &settings, const WtpRecord &wtp)
{
    if (settings.name != nullptr)
        return fnmatch(settings.name, std::string(wtp.name).c_str(), 0) == 0;
    return wtp.managed != 0 || !settings.all_managed;
}

// Those of a list of addresses are in its order.
static std::vector<RollDevice> choose(const RolloutSettings &settings)
{
    std::vector<RollDevice> devices;
    std::map<Mac, size_t> places;
    for (const Mac &mac : settings.macs) {
        places[mac] = devices.size();
        devices.emplace_back().mac = mac;
        skip(devices.back(), "not found");
    }
    const std::vector<Mac> macs(settings.macs.begin(), settings.macs.end());
    list_devices(settings, macs, [&](const WtpRecord &wtp) {
        if (!is_chosen(settings, wtp))
            return;
        const auto [place, is_new] = places.emplace(wtp.mac, devices.size());
        if (is_new && macs.empty())
            devices.push_back(device_of(wtp));
        else if (place->second < devices.size())
            devices[place->second] = device_of(wtp);
    });
    return devices;
}

// An upgrade that runs may be the first of two when the controller does not tell.
static void set_steps(RollDevice &device, const FirmwareSteps &known)
{
    const auto steps = known.steps.find(device.mac);
    if (steps != known.steps.end()) {
        device.steps = steps->second;
    } else if (device.stage == UpgradeStage::upgrading) {
        device.steps = STEPS_MAX;
    } else {
        const uint8_t code = known.codes.at(device.mac);
        device.current = code == RESULT_NO_IMAGE || code == RESULT_SUCCESS;
        skip(device, device.current ? "no newer firmware" : result_text(code, device.mac));
    }
}

std::vector<RollDevice> make_plan(const RolloutSettings &settings)
{
    std::vector<RollDevice> devices = choose(settings);
    if (devices.empty())
        throw Failure(settings.name != nullptr ? "no device has a name that fits"
                                               : "no device is under management");
    std::vector<Mac> asked;
    for (const RollDevice &device : devices)
        if (!device.finished())
            asked.push_back(device.mac);
    const FirmwareSteps known = ask_firmware_steps(settings, asked);
    for (RollDevice &device : devices)
        if (!device.finished())
            set_steps(device, known);
    return devices;
}
