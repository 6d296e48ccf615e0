// SPDX-License-Identifier: MIT
// What a look, or a question about the steps left, means for a device.
#include "common/table.h"
#include "rollout/roll.h"

#include <algorithm>
#include <cstring>

using enum UpgradeStage;

enum : unsigned { LOOKS_TO_BEGIN = 3, LOOKS_TO_RETURN = 2 };

// The step that leads to the version that the device is to keep.
bool Roll::is_last(const RollDevice &device) const
{
    return device.steps_left == 1;
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
        halt_for(std::string(mac_to_text(device.mac)) + " " + what);
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
        announced_.emplace(device.model, Announcement{version, batch()}).first->second;
    if (first.version != version && first.batch < batch())
        halt_for(std::string(mac_to_text(device.mac)) + " announces version " + text +
                 " where it was " + version_text(first.version) + ": the image was replaced");
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
            halt_for(std::string(mac_to_text(device.mac)) + " " + text);
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
        end(device, done, "");
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
    RollDevice &device = at(mac);
    if (!runs(device)) // the answer for another has stopped it
        return;
    now_ = now;
    UpgradeStep &step = device.step;
    step.check = false;
    if (device.stage == waiting) {
        device.steps_left = left;
        if (left > 0)
            return;
        device.current = limits_.to.empty();
        end(device, skipped, "no newer firmware");
    } else if (left == 0) {
        device.steps_left = 1; // this one
        if (!device.to.empty())
            judge_announcement(device);
        if (device.finished())
            return;
        if (limits_.to.empty() || device.last.version == limits_.to) {
            device.to = device.last.version;
            see_target(device);
        } else {
            device.to.clear();
            step.refuted = device.last.version;
        }
    } else if (device.steps_left != 0 && left >= device.steps_left) {
        step.refuted = device.last.version;
    } else if (step.restarted) {
        finish_step(device, left);
    }
    settle_batch();
}
