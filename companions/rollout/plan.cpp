// SPDX-License-Identifier: MIT
#include "rollout/plan.h"

#include "common/device_names.h"
#include "course/choice.h"
#include "proto/result_code.h"
#include "rollout/requests.h"

#include <algorithm>
#include <cstring>

Observation observation_of(const WtpRecord &wtp)
{
    Observation seen;
    seen.listed = true;
    seen.managed = wtp.managed != 0;
    seen.online = wtp.state == WTP_ONLINE;
    seen.busy = is_in_upgrade(wtp);
    seen.progress = wtp.progress;
    seen.version = wtp.sw_ver;
    seen.announced = wtp.new_fw_ver;
    seen.uptime = wtp.uptime;
    seen.change_time = wtp.change_time;
    seen.upg_state = wtp.upg_state;
    return seen;
}

namespace {

class Planner {
public:
    explicit Planner(const RolloutSettings &settings) : settings_(settings) {}

    std::vector<RollDevice> make();

private:
    template <class Ask> void ask(Ask ask) { ask_patiently(settings_.timeout, answered_, ask); }

    void read_list();
    void ask_for_steps();
    void set_steps(RollDevice &device, const FirmwareSteps &known) const;
    void set_batches();
    SwitchLinks find_links();

    const RolloutSettings &settings_;
    bool answered_ = false; // the controller has, once
    std::vector<RollDevice> devices_;
    std::vector<Mac> switches_; // of the whole list
};

void skip(RollDevice &device, const std::string &reason)
{
    device.stage = UpgradeStage::skipped;
    device.reason = reason;
}

RollDevice device_of(const WtpRecord &wtp, const RolloutSettings &settings)
{
    RollDevice device;
    device.mac = wtp.mac;
    device.name = wtp.name;
    device.model = wtp.model;
    device.kind = wtp.wtp_type;
    device.from = wtp.sw_ver;
    device.last = observation_of(wtp);
    if (!device.last.managed) {
        skip(device, "not under management");
    } else if (device.last.busy) {
        device.stage = UpgradeStage::upgrading;
        device.followed = device.foreign = true;
    } else if (!device.last.online) {
        skip(device, "offline");
    } else if (settings.to != nullptr && device.from == settings.to) {
        skip(device, "has this version");
        device.current = true;
    } else if (settings.to != nullptr && !settings.allow_older &&
               strverscmp(device.from.c_str(), settings.to) > 0) {
        skip(device, "has a newer version");
    }
    return device;
}

void Planner::read_list()
{
    SelectionCheck check(settings_);
    ask([&] {
        devices_.clear();
        switches_.clear();
        check = SelectionCheck(settings_);
        list_devices(settings_, {}, [&](const WtpRecord &wtp) {
            check.saw(wtp);
            if (wtp.wtp_type == DEVICE_SWITCH)
                switches_.push_back(wtp.mac);
            if (settings_.includes(wtp))
                devices_.push_back(device_of(wtp, settings_));
        });
    });
    check_choice(check);
    for (const Mac &mac : check.missing_macs()) {
        devices_.emplace_back().mac = mac;
        skip(devices_.back(), "not in the list");
    }
}

// An upgrade that runs may be the first of two when the controller does not tell.
void Planner::set_steps(RollDevice &device, const FirmwareSteps &known) const
{
    const auto steps = known.steps.find(device.mac);
    const uint8_t code = known.codes.at(device.mac);
    if (steps != known.steps.end()) {
        device.steps_left = steps->second;
    } else if (device.stage == UpgradeStage::upgrading) {
        device.steps_left = 0;
    } else if (code == RESULT_SUCCESS) {
        skip(device, "the controller does not say how many upgrades it needs");
    } else {
        device.current = code == RESULT_NO_IMAGE && settings_.to == nullptr;
        skip(device, code == RESULT_NO_IMAGE ? "no newer firmware" : result_text(code, device.mac));
    }
}

void Planner::ask_for_steps()
{
    std::vector<Mac> macs;
    for (const RollDevice &device : devices_)
        if (!device.finished())
            macs.push_back(device.mac);
    FirmwareSteps known;
    if (!macs.empty())
        ask([&] { known = ask_firmware_steps(settings_, macs); });
    for (RollDevice &device : devices_)
        if (!device.finished())
            set_steps(device, known);
}

SwitchLinks Planner::find_links()
{
    SwitchLinks links;
    if (!settings_.keep_order && !switches_.empty())
        ask([&] { links = links_of(list_topology(settings_, switches_), switches_); });
    return links;
}

// What runs already is followed in a batch of its own, before anything begins.
void Planner::set_batches()
{
    std::vector<BatchDevice> waiting;
    std::vector<size_t> positions;
    size_t first = 1;
    for (RollDevice &device : devices_) {
        if (device.followed) {
            device.batch = 1;
            first = 2;
        }
        if (device.stage != UpgradeStage::waiting)
            continue;
        waiting.push_back({device.mac, device.name, device.kind});
        positions.push_back(static_cast<size_t>(&device - devices_.data()));
    }
    BatchPlan plan = {settings_.batch, devices_.size(), settings_.keep_order, {}};
    if (waiting.size() > 1)
        plan.links = find_links();
    const auto batches = make_batches(waiting, plan);
    for (size_t i = 0; i < batches.size(); i++)
        for (const size_t member : batches[i])
            devices_[positions[member]].batch = first + i;
}

std::vector<RollDevice> Planner::make()
{
    read_list();
    order_as_chosen(devices_, settings_);
    ask_for_steps();
    set_batches();
    return std::move(devices_);
}

} // namespace

std::vector<RollDevice> make_plan(const RolloutSettings &settings)
{
    return Planner(settings).make();
}
