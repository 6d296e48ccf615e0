// SPDX-License-Identifier: MIT
// The course of a roll-out: a machine that is fed with what was seen and answered, and with the
// time in seconds, and says what is to be asked next. It does no input or output.
//
// A device is busy while the list flags it for an upgrade or shows it in one, and at rest when it
// is online and not busy. Its states:
//
//     waiting     answered: success                  sent
//                 answered: no image                 skipped, or done behind an earlier step
//                 answered: busy, and it may be so
//                     by a request without reply     sent
//                 answered: busy, not ready or no
//                     response, behind an earlier
//                     step                           waiting: is asked again
//                 answered: anything else            failed
//                 busy                               upgrading
//                 deadline                           failed
//     sent        busy                               upgrading
//                 at rest with another version       done, or waiting for its next step
//                 deadline                           timed out
//     upgrading   at rest with the announced version done, or waiting for its next step
//                 at rest otherwise, twice in a row  failed
//                 deadline                           timed out
//
// Twice, since a device may be seen with its old version just before it restarts. A deadline counts
// from the batch's beginning, and anew from each request that a device takes.
#pragma once

#include "util/mac.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

enum class UpgradeStage : uint8_t { waiting, sent, upgrading, done, failed, timed_out, skipped };

struct RollDevice {
    Mac mac;
    std::string name;
    std::string from, to; // versions; `to` is empty until it is announced
    UpgradeStage stage = UpgradeStage::waiting;
    std::string reason;      // why it failed or was skipped, or is asked again
    bool current = false;    // skipped since there is nothing newer
    unsigned steps = 1;      // upgrades on the way to the newest version
    unsigned steps_done = 0; // those of them that are done
    unsigned progress = 0;   // of the present one, in percent
    size_t batch = 0;        // counted from 1; 0 when it is in none
    double begun = -1;       // when it was asked or found upgrading first; -1: not yet
    double ended = -1;

    // How it stands within the present step.
    std::string start;       // the version before it
    double since = 0;        // what the deadline counts from
    bool reply_lost = false; // a request for it had no reply
    bool online = true;      // when it was seen last
    unsigned idle_seen = 0;  // how often in a row it was at rest without the version

    bool finished() const { return stage >= UpgradeStage::done; }
};

// What the list says of a device.
struct Observation {
    bool online = false, busy = false;
    unsigned progress = 0;
    std::string version, announced;
};

struct RollLimits {
    uint32_t batch = 10, max_failures = 0;
    double deadline = 900;
};

class Roll {
public:
    // Is told of each device whose stage has changed.
    struct Listener {
        virtual void changed(const RollDevice &device) = 0;

    protected:
        ~Listener() = default;
    };

    // Puts the devices that wait into batches, in their order. Those that are upgrading already are
    // in the first, whatever its size.
    Roll(std::vector<RollDevice> devices, const RollLimits &limits, Listener &listener);

    const std::vector<RollDevice> &devices() const { return devices_; }
    size_t batches() const { return batches_; }
    size_t batch() const { return batch_; } // the present one, 0 before the first
    size_t count(UpgradeStage stage) const;
    bool too_many_failed() const;

    // Begins the next batch; false when there is none, or too many devices failed.
    bool begin_batch(double now);

    // Those of the batch that have not ended; and those that are to be asked to upgrade.
    std::vector<Mac> running() const;
    std::vector<Mac> pending() const;

    void observe(const Mac &mac, const Observation &seen, double now);
    void answered(const Mac &mac, uint8_t code, double now);
    void unanswered(const std::vector<Mac> &macs); // it is not known whether the request was done
    void pass_time(double now);                    // ends what is beyond its deadline
    void drop_unasked();                           // leaves those out that no request has reached

    // Percent of the batch's work, and of all.
    unsigned batch_progress() const { return progress(batch_, batch_); }
    unsigned whole_progress() const { return progress(1, batches_); }

private:
    RollDevice *find(const Mac &mac);
    void enter(RollDevice &device, UpgradeStage stage);
    void end(RollDevice &device, UpgradeStage stage, double now, const std::string &reason = {});
    void see_at_rest(RollDevice &device, const Observation &seen, double now);
    void arrive(RollDevice &device, const std::string &version, double now);
    unsigned progress(size_t first, size_t last) const;

    std::vector<RollDevice> devices_;
    std::map<Mac, size_t> by_mac_;
    RollLimits limits_;
    Listener &listener_;
    size_t batches_ = 0, batch_ = 0;
};
