// SPDX-License-Identifier: MIT
// The course of an apply: a machine that is fed with what was seen and answered, and with the time
// in seconds, and says what is to be sent next. It does no input or output.
//
// What is stored for a device is as it was confirmed, or as it is wanted, or neither. The stages of
// a device:
//
//     waiting   for its request      sent when that was answered, or may have been; skipped when it
//                                    is not as confirmed any more; failed when it did not answer
//                                    for `begin` that it can take it, or is changed all the same
//     sent      answered with 0      settling when it is online and as wanted; failed when it is
//                                    online and not so for `begin`
//               answered otherwise   failed when the next look tells whether it is stored all the
//                                    same; after "no response" not before `begin` is over
//               not answered         sent once more; not answered again: unknown
//     settling  it is as wanted      done when it was so, and online, for `settle`; that begins
//                                    anew when it is not online, or has been away between two
//                                    looks; sent when it is not as wanted any more
//
// What may never happen: something is sent to a device that was not chosen, or that is in another
// batch; to one that is not as confirmed (but once more to one that may have taken it); after
// halt(), but for that one repetition; more than twice without an answer; again after an answer
// other than "busy" or "not ready". A device is done without an answer 0, or without having been
// seen online and as wanted, with no other change of its state in between, for the time to settle.
// Everything ends: each stage has a limit, and the silence of the controller has one.
#pragma once

#include "course/batch_machine.h"
#include "util/mac.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

enum class ApplyStage : uint8_t {
    waiting,
    sent,
    settling,
    done,
    failed,
    timed_out,
    unknown,
    skipped
};

enum class Stored : uint8_t { unread, as_confirmed, as_wanted, other };

// What the list says of a device. Without `listed` it is not in it.
struct ApplyLook {
    bool listed = false, managed = true, online = false, busy = false;
    uint32_t change_time = 0; // of its state
    Stored stored = Stored::unread;
    std::string what; // of other: what it is
};

// Times are those of the service clock, but for begun and ended.
struct ApplyDevice {
    Mac mac;
    std::string name;
    size_t batch = 0; // counted from 1; 0 when it is in none
    ApplyStage stage = ApplyStage::waiting;
    std::string reason;      // why it failed, or waits
    bool awaits = false;     // a request is on its way, or its reply
    bool looked = false;     // since the last answer
    unsigned losses = 0;     // requests without an answer
    bool is_put_off = false; // answered that it cannot take it now
    bool is_taken = false;   // answered with 0
    std::string refusal;     // what it was answered else
    bool is_patient = false; // that was "no response"
    double entered = 0;      // when it began to wait, or what it is in the middle of
    double sent = 0;         // when the request was sent first
    double held_since = -1;  // since when it is as wanted and online; -1: it is not
    uint32_t held_change = 0;
    double begun = -1, ended = -1; // -1: not yet
    ApplyLook last;

    bool finished() const { return stage >= ApplyStage::done; }
    bool at_rest() const { return last.listed && last.managed && last.online && !last.busy; }
};

struct ApplyLimits {
    size_t max_failures = 0;
    double deadline = 900, begin = 60, settle = 30, outage = 900; // seconds
};

class Apply final : public BatchMachine<ApplyDevice> {
public:
    // Devices have their batches already.
    Apply(std::vector<ApplyDevice> devices, const ApplyLimits &limits, Listener &listener)
        : BatchMachine(std::move(devices), limits.outage, listener), limits_(limits)
    {
    }

    size_t failures() const;

    // Begins the next batch; false when there is none, or none may begin.
    bool begin_batch(double now);

    // Those of the batch that are to be looked at, and those that are to be sent their settings by
    // what was seen.
    std::vector<Mac> watched() const;
    std::vector<Mac> pending() const;

    // A look at all that are watched.
    void look(const std::map<Mac, ApplyLook> &seen, double now);

    // A request is sent to those devices; what it was answered for one, or that there was no
    // answer. `text` says the code in words, and is empty for success.
    void ask(const std::vector<Mac> &macs, double now);
    void answered(const Mac &mac, uint8_t code, const std::string &text, double now);
    void unanswered(const std::vector<Mac> &macs, double now);

private:
    bool wants_request(const ApplyDevice &device) const;
    void enter(ApplyDevice &device, ApplyStage stage);
    void end(ApplyDevice &device, ApplyStage stage, const std::string &reason) override;
    void see(ApplyDevice &device, const ApplyLook &seen);
    void see_waiting(ApplyDevice &device);
    void see_sent(ApplyDevice &device);
    void see_settling(ApplyDevice &device);
    void check_limits(ApplyDevice &device);
    void settle_batch() override;
    unsigned percent(const ApplyDevice &device) const override;

    ApplyLimits limits_;
};
