// SPDX-License-Identifier: MIT
// The machine of an apply, with the controller that it asks and those that it tells.
#pragma once

#include "apply/apply.h"
#include "apply/plan.h"

class ApplyCourse final : public Course, private Apply::Listener {
public:
    ApplyCourse(const ApplySettings &settings, const Sources &sources, const ApplyPlan &plan,
                const ApplyLimits &limits, Reporter &reporter);

    const Apply &apply() const { return apply_; }

    bool begin_batch(double now) override;
    bool is_running() const override { return apply_.is_running(); }
    std::string batch_text() const override;
    Progress progress() const override;
    void look() override;
    void send() override;
    void silent(double since, double now) override { apply_.silent(since, now); }
    void halt(Halt why) override { apply_.halt(why); }
    void abandon() override;

private:
    // A device of the present batch, as it was read before its request.
    struct Prepared {
        ConfigRow before, wanted;
        std::string items; // that are sent, and their end
    };

    ApplyLook look_at(const WtpRecord &wtp);
    void compare_waiting(const PlannedDevice &device, const ConfigRow &stored, ApplyLook &look);
    void compare_sent(const PlannedDevice &device, const ConfigRow &stored, ApplyLook &look) const;
    std::vector<Mac> choose();
    void changed(const ApplyDevice &device) override;

    const ApplySettings &settings_;
    const Sources &sources_;
    std::map<Mac, const PlannedDevice *> planned_;
    Apply apply_;
    Reporter &reporter_;
    std::map<Mac, Prepared> prepared_;
};

// "failed: REASON", for tables; and a line of the log.
std::string stage_text(const ApplyDevice &device);
std::string result_text(const ApplyDevice &device);
std::string event_text(const ApplyDevice &device);
