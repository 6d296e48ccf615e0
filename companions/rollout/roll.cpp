// SPDX-License-Identifier: MIT
#include "rollout/roll.h"

#include "common/table.h"
#include "proto/result_code.h"

#include <algorithm>

using enum UpgradeStage;

enum : unsigned { LOOKS_TO_BE_ASKED = 2 };

Roll::Roll(std::vector<RollDevice> devices, const RollLimits &limits, Listener &listener)
    : BatchMachine(std::move(devices), limits.outage, listener), limits_(limits)
{
    for (RollDevice &device : devices_)
        device.step.start = device.from;
}

static bool is_failure(const RollDevice &device)
{
    return !device.foreign &&
           (device.stage == failed || device.stage == timed_out || device.stage == unknown);
}

size_t Roll::failures() const
{
    return static_cast<size_t>(std::count_if(devices_.begin(), devices_.end(), is_failure));
}

void Roll::halt_for(const std::string &reason)
{
    if (may_begin())
        halt_reason_ = reason;
    halt(Halt::differs);
}

bool Roll::begin_batch(double now)
{
    if (failures() > limits_.max_failures)
        halt(Halt::failures);
    if (!next_batch(now))
        return false;
    for (RollDevice &device : devices_)
        device.late = false;
    for (RollDevice &device : devices_) {
        if (!runs(device))
            continue;
        device.step.entered = clock_.time(now_);
        if (device.stage == upgrading) {
            device.stage = sent;
            set_asked(device);
            see_busy(device); // as the plan has seen it
        }
    }
    return true;
}

std::vector<Mac> Roll::watched() const
{
    std::vector<Mac> macs;
    for (const RollDevice &device : devices_)
        if (device.batch == batch() && (!device.finished() || device.late))
            macs.push_back(device.mac);
    return macs;
}

std::vector<Mac> Roll::unclear() const
{
    std::vector<Mac> macs;
    for (const RollDevice &device : devices_)
        if (runs(device) && device.step.check && device.at_rest())
            macs.push_back(device.mac);
    return macs;
}

// After halt() only what follows on a step that was done goes on.
bool Roll::wants_request(const RollDevice &device) const
{
    if (device.batch != batch() || !device.at_rest() || !device.last.managed || device.step.check ||
        device.step.awaits)
        return false;
    if (device.stage == waiting)
        return may_begin() || (device.asked && device.steps_done > 0);
    return device.stage == sent && device.step.reply_lost && may_begin() && device.step.looks > 0 &&
           device.last.version == device.step.start;
}

// Those that were asked and have not ended, as far as anybody can tell.
size_t Roll::in_flight() const
{
    return static_cast<size_t>(
        std::count_if(devices_.begin(), devices_.end(), [this](const RollDevice &device) {
            return device.batch == batch() && device.asked && (!device.finished() || device.late);
        }));
}

// A batch is as large as it may be, but for the one of devices that were busy before.
size_t Roll::capacity() const
{
    const bool follows =
        std::any_of(devices_.begin(), devices_.end(), [this](const RollDevice &device) {
            return device.batch == batch() && device.followed;
        });
    return follows ? limits_.follow : devices_.size();
}

std::vector<Mac> Roll::pending() const
{
    std::vector<Mac> macs;
    const size_t most = capacity();
    size_t busy = in_flight();
    for (const RollDevice &device : devices_) {
        if (!wants_request(device) || (!device.asked && busy >= most))
            continue;
        busy += !device.asked;
        macs.push_back(device.mac);
    }
    return macs;
}

void Roll::end(RollDevice &device, UpgradeStage stage, const std::string &reason)
{
    device.ended = now_;
    device.reason = reason;
    device.late = false;
    if (stage == failed && device.step.asked >= 0 && device.last.upg_state != device.step.upg_state)
        device.reason += " (upgrade state " + std::to_string(device.last.upg_state) + ")";
    enter(device, stage);
}

// Notes how a device is when it is asked, which a restart is told by.
void Roll::set_asked(RollDevice &device)
{
    UpgradeStep &step = device.step;
    step.restarted = false;
    step.asked = clock_.time(now_);
    step.asked_real = now_;
    step.uptime = device.last.uptime;
    step.upg_state = device.last.upg_state;
    if (device.begun < 0)
        device.begun = now_;
}

void Roll::look(const std::map<Mac, Observation> &seen, double since, double now)
{
    now_ = now;
    looked_ = since;
    clock_.answered(now);
    for (const Mac &mac : watched()) {
        const auto found = seen.find(mac);
        see(devices_[by_mac_.at(mac)], found == seen.end() ? Observation() : found->second);
    }
    for (RollDevice &device : devices_)
        if (runs(device))
            check_limits(device);
    check_failures();
    settle_batch();
}

// What failed in the batch keeps others from beginning in it; but for those that may begin late.
void Roll::check_failures()
{
    const auto failed_for_good =
        std::count_if(devices_.begin(), devices_.end(),
                      [](const RollDevice &device) { return is_failure(device) && !device.late; });
    if (static_cast<size_t>(failed_for_good) > limits_.max_failures)
        halt(Halt::failures);
}

void Roll::answered(const Mac &mac, uint8_t code, double now)
{
    RollDevice &device = at(mac);
    now_ = now;
    UpgradeStep &step = device.step;
    step.awaits = false;
    const bool is_taken = code == RESULT_SUCCESS || (code == RESULT_BUSY && step.reply_lost);
    if (is_taken || code == RESULT_NO_RESPONSE) {
        set_asked(device);
        step.reply_lost = !is_taken;
        step.looks = 0;
        device.asked = true;
        device.foreign = false;
        device.reason = is_taken ? "" : result_text(code, mac);
        if (is_taken || device.stage == waiting)
            enter(device, sent);
    } else if (code == RESULT_BUSY || code == RESULT_NOT_READY) {
        device.reason = result_text(code, mac);
        if (step.reply_lost)
            step.looks = 0;
    } else if (code != RESULT_NO_IMAGE) {
        end(device, failed, result_text(code, mac));
    } else if (device.steps_done == 0) {
        device.current = limits_.to.empty();
        end(device, skipped, "no newer firmware");
    } else if (!limits_.to.empty() && step.start != limits_.to) {
        end(device, failed, "no newer firmware");
    } else { // the step before was the last, unless a request without reply has begun another
        const bool may_have_begun = step.reply_lost;
        device.to = step.start;
        device.steps_left = 1;
        device.steps_done--;
        set_asked(device);
        step.reply_lost = false;
        step.restarted = !may_have_begun;
        step.held_since = clock_.time(now_);
        step.change_time = device.last.change_time;
        enter(device, may_have_begun ? upgrading : settling);
    }
    check_failures();
    settle_batch();
}

void Roll::ask(const std::vector<Mac> &macs)
{
    for (const Mac &mac : macs)
        at(mac).step.awaits = true;
}

void Roll::unanswered(const std::vector<Mac> &macs, double now)
{
    now_ = now;
    for (const Mac &mac : macs) {
        RollDevice &device = at(mac);
        set_asked(device);
        device.step.awaits = false;
        device.step.reply_lost = true;
        device.step.looks = 0;
        device.asked = true;
        device.foreign = false;
        if (device.stage == waiting)
            enter(device, sent);
    }
}

static const char *absence_text(const RollDevice &device)
{
    return device.last.listed ? "offline" : "not in the list any more";
}

void Roll::check_limits(RollDevice &device)
{
    const double now = clock_.time(now_);
    const UpgradeStep &step = device.step;
    const bool begin_over = now - step.entered >= limits_.begin;
    const std::string why_not =
        device.reason.empty() ? "did not begin" : std::string(device.reason);
    if (device.stage == waiting) {
        if (!device.asked && in_flight() >= capacity())
            device.step.entered = now; // it waits for others
        else if (begin_over && !device.at_rest())
            end(device, failed, absence_text(device));
        else if (begin_over && step.looks >= LOOKS_TO_BE_ASKED) // it could be asked after the first
            end(device, failed, why_not);
    } else if (device.stage == sent && step.reply_lost && begin_over && step.looks > 0) {
        end(device, failed, why_not);
        device.late = true;
    } else if (now - step.asked >= limits_.deadline) {
        const bool is_away = !device.last.listed || (!device.last.online && !device.last.busy);
        end(device, timed_out,
            is_away                    ? absence_text(device)
            : device.last.busy         ? "stayed at " + std::to_string(device.progress) + " %"
            : device.stage == settling ? "not settled in time"
            : step.restarted           ? "has version " + version_text(device.last.version)
                                       : "was not seen to restart");
    }
}

// Leaves out what may not begin any more, and lets those begin that wait for nothing but devices
// that did not.
void Roll::settle_batch()
{
    bool waits = false, flies = false;
    for (RollDevice &device : devices_) {
        if (device.batch != batch() || device.finished())
            continue;
        const bool begins = device.stage == waiting && !device.step.awaits &&
                            !(device.asked && device.steps_done > 0);
        if (begins && !may_begin())
            device.batch = 0;
        else
            (begins ? waits : flies) = true;
    }
    if (waits && !flies && in_flight() >= capacity())
        for (RollDevice &device : devices_)
            device.late = false;
}

unsigned Roll::percent(const RollDevice &device) const
{
    const unsigned steps = device.steps_done + std::max(device.steps_left, 1U);
    return (device.steps_done * 100 + device.progress) / steps;
}
