// SPDX-License-Identifier: MIT
// The machine of a roll-out, with the controller that it asks and those that it tells.
#pragma once

#include "rollout/options.h"
#include "rollout/roll.h"

class RolloutCourse final : public Course, private Roll::Listener {
public:
    RolloutCourse(const RolloutSettings &settings, std::vector<RollDevice> devices,
                  const RollLimits &limits, Reporter &reporter)
        : settings_(settings), roll_(std::move(devices), limits, *this), reporter_(reporter)
    {
    }

    const Roll &roll() const { return roll_; }

    bool begin_batch(double now) override { return roll_.begin_batch(now); }
    bool is_running() const override { return roll_.is_running(); }
    std::string batch_text() const override;
    Progress progress() const override;
    void look() override;
    void send() override;
    void silent(double since, double now) override { roll_.silent(since, now); }
    void halt(Halt why) override { roll_.halt(why); }
    void abandon() override;

private:
    void ask_for_steps();
    std::vector<Mac> choose();
    void changed(const RollDevice &device) override;

    const RolloutSettings &settings_;
    Roll roll_;
    Reporter &reporter_;
};

// A device and what has become of it, as a line of the log.
std::string event_text(const RollDevice &device);
