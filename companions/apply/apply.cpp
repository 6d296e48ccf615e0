// SPDX-License-Identifier: MIT
#include "apply/apply.h"

#include "proto/result_code.h"

#include <algorithm>

using enum ApplyStage;

enum : unsigned { LOSSES_MAX = 2 }; // a request is sent once more

constexpr const char *UNREADABLE = "its configuration cannot be read any more";
constexpr const char *BUT_STORED = ", but stored: a plan will not show it";

size_t Apply::failures() const
{
    return count(failed) + count(timed_out) + count(unknown);
}

bool Apply::begin_batch(double now)
{
    if (failures() > limits_.max_failures)
        halt(Halt::failures);
    if (!next_batch(now))
        return false;
    for (ApplyDevice &device : devices_)
        if (runs(device))
            device.entered = clock_.time(now_);
    return true;
}

std::vector<Mac> Apply::watched() const
{
    std::vector<Mac> macs;
    for (const ApplyDevice &device : devices_)
        if (runs(device))
            macs.push_back(device.mac);
    return macs;
}

// What was not answered is sent once more, by a stop too, where nobody else has changed it.
bool Apply::wants_request(const ApplyDevice &device) const
{
    if (!runs(device) || device.awaits || !device.looked || !device.at_rest())
        return false;
    if (device.stage == waiting)
        return may_begin() && device.last.stored == Stored::as_confirmed;
    return device.stage == sent && !device.is_taken && device.refusal.empty() &&
           device.losses < LOSSES_MAX &&
           (device.last.stored == Stored::as_confirmed || device.last.stored == Stored::as_wanted);
}

std::vector<Mac> Apply::pending() const
{
    std::vector<Mac> macs;
    for (const ApplyDevice &device : devices_)
        if (wants_request(device))
            macs.push_back(device.mac);
    return macs;
}

void Apply::enter(ApplyDevice &device, ApplyStage stage)
{
    device.entered = clock_.time(now_);
    BatchMachine::enter(device, stage);
}

void Apply::end(ApplyDevice &device, ApplyStage stage, const std::string &reason)
{
    device.ended = now_;
    device.reason = reason;
    enter(device, stage);
}

void Apply::ask(const std::vector<Mac> &macs, double now)
{
    now_ = now;
    for (const Mac &mac : macs) {
        ApplyDevice &device = at(mac);
        device.awaits = true;
        if (device.begun < 0) {
            device.sent = clock_.time(now_);
            device.begun = now_;
        }
    }
}

void Apply::answered(const Mac &mac, uint8_t code, const std::string &text, double now)
{
    ApplyDevice &device = at(mac);
    now_ = now;
    device.awaits = device.looked = false;
    device.reason = text;
    const bool comes_back = code == RESULT_BUSY || code == RESULT_NOT_READY;
    if (comes_back && device.stage == waiting) { // it is asked again, and has begun nothing
        device.begun = -1;
        device.is_put_off = true;
    } else {
        device.is_taken = code == RESULT_SUCCESS;
        device.is_patient = code == RESULT_NO_RESPONSE;
        device.refusal = device.is_taken ? "" : text;
        enter(device, sent);
    }
    settle_batch();
}

void Apply::unanswered(const std::vector<Mac> &macs, double now)
{
    now_ = now;
    for (const Mac &mac : macs) {
        ApplyDevice &device = at(mac);
        device.awaits = device.looked = false;
        device.losses++;
        device.reason = "no answer";
        enter(device, sent);
    }
    settle_batch();
}

void Apply::look(const std::map<Mac, ApplyLook> &seen, double now)
{
    now_ = now;
    clock_.answered(now);
    for (const Mac &mac : watched()) {
        const auto found = seen.find(mac);
        ApplyDevice &device = at(mac);
        see(device, found == seen.end() ? ApplyLook() : found->second);
        if (!device.finished())
            check_limits(device);
    }
    if (failures() > limits_.max_failures)
        halt(Halt::failures);
    settle_batch();
}

void Apply::see(ApplyDevice &device, const ApplyLook &seen)
{
    device.last = seen;
    device.looked = true;
    if (seen.stored == Stored::unread)
        device.held_since = -1;
    if (seen.stored == Stored::unread || device.awaits)
        return;
    if (device.stage == waiting)
        see_waiting(device);
    else if (device.stage == sent)
        see_sent(device);
    if (device.stage == settling)
        see_settling(device);
}

void Apply::see_waiting(ApplyDevice &device)
{
    const Stored stored = device.last.stored;
    if (stored == Stored::as_confirmed)
        return;
    if (device.is_put_off) {
        device.begun = now_;
        end(device, failed,
            device.reason + (stored == Stored::as_wanted ? BUT_STORED : "; " + device.last.what));
    } else {
        end(device, skipped, device.last.what.empty() ? "changed meanwhile" : device.last.what);
    }
}

static std::string stored_text(const ApplyLook &look)
{
    return look.stored == Stored::as_wanted      ? ", but stored"
           : look.stored == Stored::as_confirmed ? ", not stored"
                                                 : "; " + look.what;
}

void Apply::see_sent(ApplyDevice &device)
{
    const bool is_stored = device.last.stored == Stored::as_wanted;
    if (device.is_taken) {
        if (is_stored && device.at_rest()) {
            device.held_since = -1;
            device.held_change = device.last.change_time;
            device.reason.clear();
            enter(device, settling);
        }
    } else if (!device.refusal.empty()) {
        if (is_stored)
            end(device, failed, device.refusal + BUT_STORED);
        else if (!device.is_patient)
            end(device, failed, device.refusal);
    } else if (device.losses == LOSSES_MAX || device.last.stored == Stored::other) {
        end(device, unknown, "no answer" + stored_text(device.last));
    }
}

void Apply::see_settling(ApplyDevice &device)
{
    const double now = clock_.time(now_);
    if (device.last.stored != Stored::as_wanted) {
        device.reason = device.last.what;
        enter(device, sent);
        return;
    }
    if (!device.at_rest() || device.last.change_time != device.held_change)
        device.held_since = -1;
    device.held_change = device.last.change_time;
    if (!device.at_rest())
        return;
    if (device.held_since < 0)
        device.held_since = now;
    if (now - device.held_since >= limits_.settle)
        end(device, done, "");
}

static std::string absence_text(const ApplyDevice &device)
{
    return !device.last.listed    ? "not in the list any more"
           : !device.last.managed ? "not under management any more"
           : device.last.busy     ? "upgrading"
           : !device.last.online  ? "offline"
                                  : "";
}

void Apply::check_limits(ApplyDevice &device)
{
    if (device.awaits)
        return;
    const double now = clock_.time(now_);
    const bool begin_over = now - device.entered >= limits_.begin;
    const bool is_over = device.stage != waiting && now - device.sent >= limits_.deadline;
    const std::string absence = absence_text(device);
    if (device.stage == waiting) {
        if (begin_over && !absence.empty())
            end(device, failed, absence);
        else if (begin_over && !device.reason.empty()) // it was asked again to the last
            end(device, failed, device.reason);
        else if (begin_over && !wants_request(device))
            end(device, failed, UNREADABLE);
    } else if (device.stage == settling) {
        if (is_over)
            end(device, timed_out, absence.empty() ? "not settled in time" : absence);
    } else if (!device.is_taken && device.refusal.empty()) {
        if ((begin_over || is_over) && (device.losses == LOSSES_MAX || !wants_request(device)))
            end(device, unknown, absence.empty() ? device.reason : "no answer; " + absence);
    } else if (!device.is_taken) {
        if (begin_over || is_over)
            end(device, failed, device.refusal);
    } else if (is_over) {
        end(device, timed_out, absence.empty() ? "not stored in time" : absence);
    } else if (begin_over && absence.empty()) {
        end(device, failed,
            device.last.stored == Stored::unread ? UNREADABLE
            : device.last.what.empty()           ? "answered, but not stored"
                                                 : device.last.what);
    }
}

// Leaves out what may not begin any more.
void Apply::settle_batch()
{
    if (may_begin())
        return;
    for (ApplyDevice &device : devices_)
        if (device.batch == batch() && device.stage == waiting && !device.awaits)
            device.batch = 0;
}

unsigned Apply::percent(const ApplyDevice &device) const
{
    enum : unsigned { SENT = 30, STORED = 60 };
    return device.stage == waiting ? 0U : device.stage == sent ? SENT : STORED;
}
