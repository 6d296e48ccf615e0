// SPDX-License-Identifier: MIT
// The course of a roll-out: a machine that is fed with what was seen and answered, and with the
// time in seconds, and says what is to be asked next. It does no input or output.
//
// A device is busy while the list flags it for an upgrade or shows it in one, and at rest when it
// is online and not busy. The stages of a device:
//
//     waiting     for a request         sent when it was accepted, or when it may have been (no
//     reply,
//                                       "no response"); skipped when there is nothing newer; failed
//                                       when it was refused, or not accepted within `begin`
//     sent        nothing was seen yet  upgrading when it is busy; failed when it stays at rest
//     with
//                                       its old version for `begin`, in three looks
//     upgrading                         settling, or waiting for the next step; failed when it is
//     at
//                                       rest with another version than its target, in two looks and
//                                       for `return_time`
//     settling    it has its target     done when that stays so for `settle`, else upgrading again
//
// What may never happen: a device that was not chosen is asked; more devices are in flight than the
// batch allows; a device is asked for the first time after halt(), or again because a reply was
// lost; it is asked again before it was seen at rest; it is done without having been seen online,
// with its target, after a restart, for the time to settle. Everything ends: each stage has a
// limit, and the silence of the controller has one.
#pragma once

#include "course/batch_machine.h"
#include "util/mac.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

enum class UpgradeStage : uint8_t {
    waiting,
    sent,
    upgrading,
    settling,
    done,
    failed,
    timed_out,
    unknown,
    skipped
};

// What the list says of a device. Without `listed` it is not in it.
struct Observation {
    bool listed = false, managed = true, online = false, busy = false;
    unsigned progress = 0;
    std::string version, announced;
    uint32_t uptime = 0, change_time = 0;
    uint8_t upg_state = 0;
};

// An upgrade by one version. Times without another word are those of the service clock.
struct UpgradeStep {
    std::string start;       // the version before it
    double entered = 0;      // when the device began to wait for it
    double asked = -1;       // when it was asked last, or seen busy; -1: not yet
    double asked_real = 0;   // the same on the clock of the world
    uint32_t uptime = 0;     // of the device then
    uint8_t upg_state = 0;   // then
    bool awaits = false;     // a request is on its way, or its reply
    bool reply_lost = false; // one before may have been accepted or not
    bool busy_seen = false, restarted = false;
    bool check = false;       // it is to be asked which steps are left
    std::string refuted;      // a version that asking has shown not to be the target
    unsigned looks = 0;       // in a row at rest; with `seen_version`, which is not the target, if
    double looks_since = 0;   // it was asked
    std::string seen_version; //
    double held_since = 0;    // since when it has its target
    uint32_t change_time = 0; // then
};

struct RollDevice {
    Mac mac;
    std::string name, model;
    uint8_t kind = 0;     // as wtp_type
    std::string from, to; // versions; `to` is empty until it is known
    UpgradeStage stage = UpgradeStage::waiting;
    std::string reason;      // why it failed or was skipped, or is asked again
    bool current = false;    // skipped since there is nothing newer
    bool followed = false;   // busy before the roll-out; in the first batch
    bool foreign = false;    // somebody else's upgrade, until it is asked here
    bool asked = false;      // a request of this roll-out may have been accepted
    bool late = false;       // failed, since it did not begin; it may begin still
    unsigned steps_left = 1; // upgrades up to the newest version; 0: not known
    unsigned steps_done = 0;
    unsigned progress = 0; // of the present step, in percent
    size_t batch = 0;      // counted from 1; 0 when it is in none
    double begun = -1;     // when it was asked or found upgrading first; -1: not yet
    double ended = -1;
    Observation last; // as it was seen last
    UpgradeStep step;

    bool finished() const { return stage >= UpgradeStage::done; }
    bool at_rest() const { return last.listed && last.online && !last.busy; }
};

// The version that was announced first, for the last step.
struct Announcement {
    std::string version;
    size_t batch = 0; // in which that was
};

struct RollLimits {
    size_t follow = 1;       // devices in flight while those that were busy before are followed
    size_t max_failures = 0; //
    double deadline = 900, begin = 60, settle = 30, outage = 900; // seconds
    double return_time = 10;
    std::string to; // the version that all should have; empty: the newest
    bool allow_older = false;
};

class Roll final : public BatchMachine<RollDevice> {
public:
    // Devices have their batches already; those that upgrade already are in one of their own, the
    // first.
    Roll(std::vector<RollDevice> devices, const RollLimits &limits, Listener &listener);

    size_t failures() const; // of devices that this roll-out has asked
    const std::string &target() const { return limits_.to; } // of all; may be empty
    const std::map<std::string, Announcement> &announced() const { return announced_; }
    const std::string &halt_reason() const { return halt_reason_; } // where there is more to say

    // Begins the next batch; false when there is none, or none may begin.
    bool begin_batch(double now);

    // Those of the batch that are to be looked at; that are to be asked about the steps left; and
    // that are to be asked to upgrade.
    std::vector<Mac> watched() const;
    std::vector<Mac> unclear() const;
    std::vector<Mac> pending() const;

    // A look at all that are watched, which began at `since`.
    void look(const std::map<Mac, Observation> &seen, double since, double now);

    // A request is sent to those devices; what it was answered for each, or that there was none.
    void ask(const std::vector<Mac> &macs);
    void answered(const Mac &mac, uint8_t code, double now);
    void unanswered(const std::vector<Mac> &macs, double now);
    void steps_known(const Mac &mac, unsigned left, double now); // 0: nothing is newer

private:
    void halt_for(const std::string &reason);
    bool wants_request(const RollDevice &device) const;
    size_t in_flight() const;
    size_t capacity() const;
    bool is_last(const RollDevice &device) const;
    void end(RollDevice &device, UpgradeStage stage, const std::string &reason) override;
    void set_asked(RollDevice &device);
    void see(RollDevice &device, const Observation &seen);
    void see_busy(RollDevice &device);
    void see_at_rest(RollDevice &device);
    void see_target(RollDevice &device);
    void see_other(RollDevice &device);
    void judge_announcement(RollDevice &device);
    void finish_step(RollDevice &device, unsigned steps_left);
    void hold(RollDevice &device);
    void check_limits(RollDevice &device);
    void settle_batch() override;
    void check_failures();
    bool has_target(RollDevice &device);
    void end_unmanaged(RollDevice &device);
    unsigned percent(const RollDevice &device) const override;

    RollLimits limits_;
    double looked_ = 0; // when the look that is worked on began
    std::string halt_reason_;
    std::map<std::string, Announcement> announced_; // for each model
};
