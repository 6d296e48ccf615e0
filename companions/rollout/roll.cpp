// SPDX-License-Identifier: MIT
#include "rollout/roll.h"

#include "common/table.h"
#include "proto/result_code.h"

#include <algorithm>
#include <cstring>

using enum UpgradeStage;

enum : unsigned { LOOKS_TO_BEGIN = 3, LOOKS_TO_RETURN = 2 };

Roll::Roll(std::vector<RollDevice> devices, const RollLimits &limits, Listener &listener)
    : devices_(std::move(devices)), limits_(limits), listener_(listener)
{
    for (RollDevice &device : devices_) {
        by_mac_[device.mac] = static_cast<size_t>(&device - devices_.data());
        batches_ = std::max(batches_, device.batch);
        device.step.start = device.from;
    }
}

size_t Roll::count(UpgradeStage stage) const
{
    return static_cast<size_t>(
        std::count_if(devices_.begin(), devices_.end(),
                      [=](const RollDevice &device) { return device.stage == stage; }));
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

void Roll::halt(Halt why, const std::string &reason)
{
    if (halted_ != Halt::none)
        return;
    halted_ = why;
    halt_reason_ = reason;
    settle_batch();
}

bool Roll::begin_batch(double now)
{
    if (failures() > limits_.max_failures)
        halt(Halt::failures);
    if (batch_ == batches_ || !may_begin())
        return false;
    for (RollDevice &device : devices_)
        device.late = false;
    batch_++;
    now_ = now;
    clock_.answered(now);
    for (RollDevice &device : devices_) {
        if (device.batch != batch_ || device.finished())
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
        if (device.batch == batch_ && (!device.finished() || device.late))
            macs.push_back(device.mac);
    return macs;
}

bool Roll::is_running() const
{
    return std::any_of(devices_.begin(), devices_.end(), [this](const RollDevice &device) {
        return device.batch == batch_ && !device.finished();
    });
}

std::vector<Mac> Roll::unclear() const
{
    std::vector<Mac> macs;
    for (const RollDevice &device : devices_)
        if (device.batch == batch_ && !device.finished() && device.step.check && device.at_rest())
            macs.push_back(device.mac);
    return macs;
}

// After halt() only what follows on a step that was done goes on.
bool Roll::wants_request(const RollDevice &device) const
{
    if (device.batch != batch_ || !device.at_rest() || !device.last.managed || device.step.check ||
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
            return device.batch == batch_ && device.asked && (!device.finished() || device.late);
        }));
}

// A batch is as large as it may be, but for the one of devices that were busy before.
size_t Roll::capacity() const
{
    const bool follows =
        std::any_of(devices_.begin(), devices_.end(), [this](const RollDevice &device) {
            return device.batch == batch_ && device.followed;
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
    listener_.changed(device);
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

// The step that leads to the version that the device is to keep.
bool Roll::is_last(const RollDevice &device) const
{
    return device.steps_left == 1;
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
        if (device.batch == batch_ && !device.finished())
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

void Roll::see(RollDevice &device, const Observation &seen)
{
    UpgradeStep &step = device.step;
    const uint8_t upg_state = device.last.upg_state;
    device.last = seen;
    if (!seen.listed)
        device.last.upg_state = upg_state;
    if (seen.listed && step.asked >= 0) {
        const bool has_restarted =
            !seen.online || seen.uptime < step.uptime ||
            seen.uptime + 1.0 <= looked_ - step.asked_real; // whole seconds are shown
        step.restarted = step.restarted || has_restarted;
    }
    if (!device.at_rest() && device.stage == settling)
        enter(device, upgrading);
    if (!device.at_rest())
        step.looks = 0;
    if (!seen.listed)
        return;
    if (seen.busy)
        see_busy(device);
    else if (seen.online)
        see_at_rest(device);
}

// A device that had failed, since it did not begin, and begins.
static void begin_late(RollDevice &device)
{
    if (!device.late)
        return;
    device.late = false;
    device.ended = -1;
    device.reason.clear();
    device.stage = sent;
}

void Roll::see_busy(RollDevice &device)
{
    UpgradeStep &step = device.step;
    device.progress = std::min(device.last.progress, 100U);
    if (device.stage == waiting && !device.last.managed)
        return end_unmanaged(device);
    if (device.stage == waiting) { // somebody else was faster
        device.foreign = !device.asked;
        set_asked(device);
    }
    step.check = false;
    begin_late(device);
    step.busy_seen = true;
    step.reply_lost = false;
    const bool is_announced = !device.last.announced.empty() && device.last.announced != device.to;
    if (is_announced)
        device.to = device.last.announced;
    if (device.stage != upgrading)
        enter(device, upgrading);
    if (is_announced)
        judge_announcement(device);
}

static bool is_older(const std::string &version, const std::string &than)
{
    return strverscmp(version.c_str(), than.c_str()) < 0;
}

void Roll::end_unmanaged(RollDevice &device)
{
    end(device, device.asked ? failed : skipped, "not under management");
}

// Whether a device that waits has what all are to have, or a newer version, and is passed over.
bool Roll::has_target(RollDevice &device)
{
    const std::string &version = device.step.start;
    if (limits_.to.empty())
        return false;
    device.current = version == limits_.to;
    if (device.current)
        end(device, skipped, "has this version");
    else if (is_older(limits_.to, version) && !limits_.allow_older)
        end(device, skipped, "has a newer version");
    return device.finished();
}

// What the image on the controller is shows in the announcement only. It counts for the last step:
// before it any newer version may come.
void Roll::judge_announcement(RollDevice &device)
{
    const std::string version = device.to;
    const auto stop = [&](const std::string &what) {
        end(device, failed, what);
        halt(Halt::differs, std::string(mac_to_text(device.mac)) + " " + what);
    };
    const std::string text = version_text(version);
    if (is_older(version, device.step.start) && !limits_.allow_older)
        return stop("announces the older version " + text);
    if (!is_last(device))
        return;
    if (!limits_.to.empty()) {
        if (version != limits_.to)
            stop("announces version " + text);
        return;
    }
    const Announcement &first =
        announced_.emplace(device.model, Announcement{version, batch_}).first->second;
    if (first.version != version && first.batch < batch_)
        halt(Halt::differs, std::string(mac_to_text(device.mac)) + " announces version " + text +
                                " where it was " + version_text(first.version) +
                                ": the image was replaced");
}

void Roll::see_at_rest(RollDevice &device)
{
    UpgradeStep &step = device.step;
    const std::string &version = device.last.version;
    if (device.stage == waiting) {
        if (!device.last.managed)
            return end_unmanaged(device);
        if (version != step.start) { // somebody else has upgraded it
            step.start = version;
            if (device.steps_done == 0)
                device.from = version;
            if (has_target(device))
                return;
            step.check = true;
        }
        step.looks++;
        return;
    }
    step.check = false;
    const bool changed = version != step.start;
    if (device.late && !changed)
        return;
    begin_late(device);
    if (!limits_.to.empty() && version == limits_.to && changed) {
        device.to = version;
        device.steps_left = 1;
    } else if (device.to.empty() && changed && !step.busy_seen && version != step.refuted) {
        step.check = true; // no announcement was seen: what is newer than it?
        return;
    }
    if (!device.to.empty() && version == device.to)
        see_target(device);
    else
        see_other(device);
}

// It has the version that this step leads to.
void Roll::see_target(RollDevice &device)
{
    device.step.looks = 0;
    if (!device.step.restarted)
        return;
    if (is_last(device))
        hold(device);
    else if (device.steps_left == 0)
        device.step.check = true; // is it the newest?
    else
        finish_step(device, device.steps_left - 1);
}

void Roll::see_other(RollDevice &device)
{
    UpgradeStep &step = device.step;
    const double now = clock_.time(now_);
    if (device.stage == settling)
        enter(device, upgrading);
    if (step.looks == 0 || step.seen_version != device.last.version) {
        step.looks = 0;
        step.looks_since = now;
        step.seen_version = device.last.version;
    }
    step.looks++;
    const bool changed = step.seen_version != step.start;
    if (step.busy_seen || step.restarted || changed) {
        if (step.looks < LOOKS_TO_RETURN || now - step.looks_since < limits_.return_time)
            return;
        const std::string text = changed
                                     ? "came back with version " + version_text(step.seen_version)
                                     : "came back with its old version";
        end(device, failed, text);
        if (changed && is_last(device) && !limits_.to.empty())
            halt(Halt::differs, std::string(mac_to_text(device.mac)) + " " + text);
    } else if (step.looks >= LOOKS_TO_BEGIN && now - step.asked >= limits_.begin) {
        end(device, failed, device.reason.empty() ? "did not begin" : std::string(device.reason));
        device.late = true;
    }
}

void Roll::hold(RollDevice &device)
{
    UpgradeStep &step = device.step;
    const double now = clock_.time(now_);
    if (device.stage != settling || step.change_time != device.last.change_time) {
        step.held_since = now;
        step.change_time = device.last.change_time;
    }
    if (now - step.held_since >= limits_.settle) {
        device.steps_done++;
        end(device, done);
    } else if (device.stage != settling) {
        enter(device, settling);
    }
}

// The next step follows.
void Roll::finish_step(RollDevice &device, unsigned steps_left)
{
    device.steps_done++;
    device.steps_left = steps_left;
    enter(device, waiting);
    device.step = UpgradeStep();
    device.step.start = device.last.version;
    device.step.entered = clock_.time(now_);
    device.to.clear();
    device.reason.clear();
    device.progress = 0;
}

void Roll::steps_known(const Mac &mac, unsigned left, double now)
{
    RollDevice *device = find(mac);
    if (device == nullptr || !device->step.check || !device->at_rest())
        return;
    now_ = now;
    UpgradeStep &step = device->step;
    step.check = false;
    if (device->stage == waiting) {
        device->steps_left = left;
        if (left > 0)
            return;
        device->current = limits_.to.empty();
        end(*device, skipped, "no newer firmware");
    } else if (left == 0) {
        device->steps_left = 1; // this one
        if (!device->to.empty())
            judge_announcement(*device);
        if (device->finished())
            return;
        if (limits_.to.empty() || device->last.version == limits_.to) {
            device->to = device->last.version;
            see_target(*device);
        } else {
            device->to.clear();
            step.refuted = device->last.version;
        }
    } else if (device->steps_left != 0 && left >= device->steps_left) {
        step.refuted = device->last.version;
    } else if (step.restarted) {
        finish_step(*device, left);
    }
    settle_batch();
}

void Roll::answered(const Mac &mac, uint8_t code, double now)
{
    RollDevice *device = find(mac);
    if (device == nullptr || !device->step.awaits)
        return;
    now_ = now;
    UpgradeStep &step = device->step;
    step.awaits = false;
    const bool is_taken = code == RESULT_SUCCESS || (code == RESULT_BUSY && step.reply_lost);
    if (is_taken || code == RESULT_NO_RESPONSE) {
        set_asked(*device);
        step.reply_lost = !is_taken;
        step.looks = 0;
        device->asked = true;
        device->foreign = false;
        device->reason = is_taken ? "" : result_text(code, mac);
        if (is_taken || device->stage == waiting)
            enter(*device, sent);
    } else if (code == RESULT_BUSY || code == RESULT_NOT_READY) {
        device->reason = result_text(code, mac);
        if (step.reply_lost)
            step.looks = 0;
    } else if (code != RESULT_NO_IMAGE) {
        end(*device, failed, result_text(code, mac));
    } else if (device->steps_done == 0) {
        device->current = limits_.to.empty();
        end(*device, skipped, "no newer firmware");
    } else if (!limits_.to.empty() && step.start != limits_.to) {
        end(*device, failed, "no newer firmware");
    } else { // the step before was the last, unless a request without reply has begun another
        const bool may_have_begun = step.reply_lost;
        device->to = step.start;
        device->steps_left = 1;
        device->steps_done--;
        set_asked(*device);
        step.reply_lost = false;
        step.restarted = !may_have_begun;
        step.held_since = clock_.time(now_);
        step.change_time = device->last.change_time;
        enter(*device, may_have_begun ? upgrading : settling);
    }
    check_failures();
    settle_batch();
}

void Roll::ask(const std::vector<Mac> &macs)
{
    for (const Mac &mac : macs)
        if (RollDevice *device = find(mac))
            device->step.awaits = true;
}

void Roll::unanswered(const std::vector<Mac> &macs, double now)
{
    now_ = now;
    for (const Mac &mac : macs) {
        RollDevice *device = find(mac);
        if (device == nullptr || !device->step.awaits)
            continue;
        set_asked(*device);
        device->step.awaits = false;
        device->step.reply_lost = true;
        device->step.looks = 0;
        device->asked = true;
        device->foreign = false;
        if (device->stage == waiting)
            enter(*device, sent);
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
        else if (begin_over && step.looks >= LOOKS_TO_RETURN) // it could be asked after the first
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
        if (device.batch != batch_ || device.finished())
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

void Roll::silent(double since, double now)
{
    now_ = now;
    clock_.silent(since);
    if (clock_.silence(now) < limits_.outage)
        return;
    halt(Halt::silence);
    abandon(now, "the controller did not answer");
}

void Roll::abandon(double now, const std::string &reason)
{
    now_ = now;
    halt(Halt::signal);
    for (RollDevice &device : devices_)
        if (device.batch == batch_ && batch_ > 0 && !device.finished())
            end(device, unknown, reason);
}

unsigned Roll::progress(size_t first, size_t last) const
{
    size_t count = 0, sum = 0;
    for (const RollDevice &device : devices_) {
        if (device.batch < first || device.batch > last)
            continue;
        const unsigned steps = device.steps_done + std::max(device.steps_left, 1U);
        count++;
        sum += device.finished() ? 100 : (device.steps_done * 100 + device.progress) / steps;
    }
    return count == 0 ? 100 : static_cast<unsigned>(sum / count);
}
