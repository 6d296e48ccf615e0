// SPDX-License-Identifier: MIT
#include "rollout/roll.h"

#include "proto/result_code.h"

#include <algorithm>

using enum UpgradeStage;

enum : unsigned { IDLE_SEEN_MAX = 2 };

Roll::Roll(std::vector<RollDevice> devices, const RollLimits &limits, Listener &listener)
    : devices_(std::move(devices)), limits_(limits), listener_(listener)
{
    size_t members = 0;
    for (const RollDevice &device : devices_)
        members += device.stage == upgrading;
    batches_ = members > 0 ? 1 : 0;
    members = std::min<size_t>(members, limits.batch);
    for (RollDevice &device : devices_) {
        by_mac_[device.mac] = static_cast<size_t>(&device - devices_.data());
        device.start = device.from;
        if (device.stage == upgrading)
            device.batch = 1;
        if (device.stage != waiting)
            continue;
        if (batches_ == 0 || members == limits.batch) {
            batches_++;
            members = 0;
        }
        device.batch = batches_;
        members++;
    }
}

size_t Roll::count(UpgradeStage stage) const
{
    return static_cast<size_t>(
        std::count_if(devices_.begin(), devices_.end(),
                      [=](const RollDevice &device) { return device.stage == stage; }));
}

bool Roll::too_many_failed() const
{
    return count(failed) + count(timed_out) > limits_.max_failures;
}

bool Roll::begin_batch(double now)
{
    if (batch_ == batches_ || too_many_failed())
        return false;
    batch_++;
    for (RollDevice &device : devices_)
        if (device.batch == batch_) {
            device.since = now;
            if (device.stage == upgrading) {
                device.begun = now;
                listener_.changed(device);
            }
        }
    return true;
}

std::vector<Mac> Roll::running() const
{
    std::vector<Mac> macs;
    for (const RollDevice &device : devices_)
        if (device.batch == batch_ && !device.finished())
            macs.push_back(device.mac);
    return macs;
}

std::vector<Mac> Roll::pending() const
{
    std::vector<Mac> macs;
    for (const RollDevice &device : devices_)
        if (device.batch == batch_ && device.stage == waiting)
            macs.push_back(device.mac);
    return macs;
}

// A device that the present batch waits for; null for all others.
RollDevice *Roll::find(const Mac &mac)
{
    const auto found = by_mac_.find(mac);
    if (found == by_mac_.end())
        return nullptr;
    RollDevice &device = devices_[found->second];
    return device.batch == batch_ && !device.finished() ? &device : nullptr;
}

void Roll::enter(RollDevice &device, UpgradeStage stage)
{
    device.stage = stage;
    device.idle_seen = 0;
    listener_.changed(device);
}

void Roll::end(RollDevice &device, UpgradeStage stage, double now, const std::string &reason)
{
    device.ended = now;
    device.reason = reason;
    enter(device, stage);
}

void Roll::observe(const Mac &mac, const Observation &seen, double now)
{
    RollDevice *device = find(mac);
    if (device == nullptr)
        return;
    device->online = seen.online;
    if (!seen.busy && seen.online) {
        see_at_rest(*device, seen, now);
        return;
    }
    device->idle_seen = 0;
    if (!seen.busy)
        return;
    device->progress = std::min(seen.progress, 100U);
    if (!seen.announced.empty())
        device->to = seen.announced;
    if (device->stage == upgrading)
        return;
    if (device->stage == waiting)
        device->since = now;
    if (device->begun < 0)
        device->begun = now;
    enter(*device, upgrading);
}

void Roll::see_at_rest(RollDevice &device, const Observation &seen, double now)
{
    if (device.stage == waiting && !device.reply_lost) {
        device.start = seen.version;
        if (device.steps_done == 0)
            device.from = seen.version;
        return;
    }
    const bool changed = seen.version != device.start;
    if (device.to.empty() ? changed : seen.version == device.to)
        arrive(device, seen.version, now);
    else if (device.stage == upgrading && ++device.idle_seen == IDLE_SEEN_MAX)
        end(device, failed, now,
            changed ? "came back with version " + seen.version : "still has its old version");
}

void Roll::arrive(RollDevice &device, const std::string &version, double now)
{
    device.to = version;
    if (++device.steps_done >= device.steps) {
        end(device, done, now);
        return;
    }
    enter(device, waiting);
    device.start = version;
    device.to.clear();
    device.progress = 0;
    device.since = now;
    device.reply_lost = false;
}

// What a device may answer that has just restarted with the version of its first step.
static bool may_pass(uint8_t code)
{
    return code == RESULT_BUSY || code == RESULT_NO_RESPONSE || code == RESULT_NOT_READY;
}

void Roll::answered(const Mac &mac, uint8_t code, double now)
{
    RollDevice *device = find(mac);
    if (device == nullptr || device->stage != waiting)
        return;
    if (code == RESULT_SUCCESS || (code == RESULT_BUSY && device->reply_lost)) {
        device->since = now;
        if (device->begun < 0)
            device->begun = now;
        enter(*device, sent);
    } else if (device->steps_done > 0 && may_pass(code)) {
        device->reason = result_text(code, mac);
    } else if (code != RESULT_NO_IMAGE) {
        end(*device, failed, now, result_text(code, mac));
    } else if (device->steps_done > 0) {
        device->to = device->start;
        end(*device, done, now);
    } else {
        device->current = true;
        end(*device, skipped, now, "no newer firmware");
    }
}

void Roll::unanswered(const std::vector<Mac> &macs)
{
    for (const Mac &mac : macs)
        if (RollDevice *device = find(mac))
            device->reply_lost = true;
}

void Roll::pass_time(double now)
{
    for (RollDevice &device : devices_) {
        if (device.batch != batch_ || device.finished() || now - device.since < limits_.deadline)
            continue;
        if (device.stage == waiting)
            end(device, failed, now,
                device.reason.empty() ? "the controller could not be asked"
                                      : std::string(device.reason));
        else if (device.stage == sent)
            end(device, timed_out, now, "did not begin");
        else
            end(device, timed_out, now,
                device.online ? "stayed at " + std::to_string(device.progress) + " %"
                              : "stayed offline");
    }
}

void Roll::drop_unasked()
{
    for (RollDevice &device : devices_)
        if (device.batch == batch_ && device.stage == waiting && device.steps_done == 0 &&
            !device.reply_lost)
            device.batch = 0;
}

unsigned Roll::progress(size_t first, size_t last) const
{
    size_t count = 0, sum = 0;
    for (const RollDevice &device : devices_) {
        if (device.batch < first || device.batch > last)
            continue;
        count++;
        sum += device.finished() ? 100 : (device.steps_done * 100 + device.progress) / device.steps;
    }
    return count == 0 ? 100 : static_cast<unsigned>(sum / count);
}
