// SPDX-License-Identifier: MIT
// The machine of a roll-out in every order of events, with a second bookkeeping of what may never
// happen. With ZOV_EXPLORE=all until no new state appears, else a few thousand of them.
#include "proto/result_code.h"
#include "rollout/roll.h"
#include "tests/unit/state_space.h"

#include <gtest/gtest.h>

namespace {

constexpr double SETTLE = 1, RETURN = 1, BEGIN = 2, DEADLINE = 4, OUTAGE = 2;
constexpr uint32_t LONG_UP = 1000;

Observation seen(bool online, bool busy, const char *version, const char *announced,
                 uint32_t uptime, uint32_t change_time = 0, bool managed = true)
{
    return {true, managed, online, busy, 50, version, announced, uptime, change_time, 0};
}

const std::vector<Observation> SIGHTS = {
    {}, // not in the list
    seen(false, false, "1", "", 0),
    seen(false, true, "1", "2", 0),
    seen(true, true, "1", "", LONG_UP),
    seen(true, true, "1", "2", LONG_UP),
    seen(true, true, "2", "3", 0),
    seen(true, true, "1", "0", LONG_UP), // an older version
    seen(true, false, "1", "", LONG_UP),
    seen(true, false, "2", "", LONG_UP), // it has not restarted
    seen(true, false, "2", "", 0),
    seen(true, false, "2", "", 0, 7),
    seen(true, false, "3", "", 0),
    seen(true, false, "0", "", 0),
    seen(true, false, "1", "", LONG_UP, 0, false), // unmanaged
};

// What is known of a device from the events alone.
struct Watch {
    bool asked = false;   // perhaps with success
    bool is_open = false; // a request was accepted, and its step is not over
    bool lost = false;    // the last request may have been accepted
    bool rested = false;  // it was seen at rest since
    bool restarted = false;
    uint32_t uptime = 0;   // when it was asked
    double asked_at = 0;   //
    std::string announced; // in this step
    std::string newest;    // proven by asking
    double held = 0;       // how long it has been at rest with this version, restarted
    Observation last;
    unsigned steps_done = 0;
};

Nobody<Roll::Listener, RollDevice> nobody;

struct Fleet {
    const char *name;
    std::vector<RollDevice> devices;
    RollLimits limits;
    size_t largest; // batch
    std::vector<size_t> sights;
    size_t states; // at least so many there are
};

// Each fleet shows some of the sights; together they show all.
const std::vector<size_t> USUAL = {0, 1, 3, 4, 7, 8, 9, 10};
const std::vector<size_t> STRANGE = {1, 2, 4, 6, 7, 9, 12, 13};
const std::vector<size_t> STEPS = {1, 4, 5, 7, 9, 11};

// A time, while something depends on it.
std::string key_of_time(bool matters, double since, double now, double limit)
{
    return matters ? ::key_of_time(since, now, limit) : ",";
}

class Explorer : public Exploration<Roll, Watch, Observation> {
public:
    explicit Explorer(const Fleet &fleet)
        : Exploration({{1, DEADLINE},
                       SIGHTS,
                       fleet.sights,
                       {1, 4, 7, 9},
                       {RESULT_SUCCESS, RESULT_NO_IMAGE, RESULT_BUSY, RESULT_NO_RESPONSE,
                        RESULT_NOT_READY, 14, -1}}),
          fleet_(fleet)
    {
    }

    void run(size_t most)
    {
        State first{.machine = Roll(fleet_.devices, fleet_.limits, nobody)};
        for (const RollDevice &device : fleet_.devices) {
            first.watch.emplace_back().last = device.last;
            first.watch.back().uptime = device.last.uptime;
        }
        most = is_whole() ? most : STATES_USUAL;
        Exploration::run(fleet_.name, std::move(first), most,
                         is_whole() ? fleet_.states : STATES_USUAL);
    }

private:
    void look(Roll &roll, const Looks &looks, double now) const override
    {
        roll.look(looks, now, now);
    }
    void answer_more(State &state) const override
    {
        for (const Mac &mac : state.machine.unclear())
            state.machine.steps_known(mac, 1, state.now);
    }

    std::string key_of(const State &state) const override
    {
        std::string key =
            std::to_string(state.machine.batch()) +
            std::to_string(static_cast<int>(state.machine.halted())) +
            key_of_time(state.silent_since >= 0, state.silent_since, state.now, OUTAGE);
        for (const auto &[model, first] : state.machine.announced())
            key += first.version + (first.batch < state.machine.batch() ? "<" : "=");
        key += std::to_string(state.machine.failures());
        for (const RollDevice &device : state.machine.devices()) {
            const UpgradeStep &step = device.step;
            const Watch &watch = state.of(device.mac);
            const Observation &last = device.last;
            key += device.finished() ? "|" : "|" + std::to_string(static_cast<int>(device.stage));
            if (device.finished() && !device.late) // its past decides nothing any more
                continue;
            const bool may_be_asked = device.stage == UpgradeStage::waiting || step.reply_lost ||
                                      step.check || device.late;
            for (const bool flag : {device.foreign, device.asked, device.late, step.reply_lost,
                                    step.busy_seen, step.restarted, step.check, step.uptime > 0,
                                    watch.is_open, watch.lost, watch.rested, watch.restarted})
                key += flag ? '1' : '0';
            for (const std::string &text :
                 {device.to, step.start, step.refuted, step.looks > 0 ? step.seen_version : "",
                  watch.announced, watch.newest})
                key += text + ",";
            for (const size_t number : {size_t{device.steps_left}, size_t{device.steps_done},
                                        device.batch, size_t{std::min(step.looks, 3U)}})
                key += std::to_string(number) + ",";
            if (may_be_asked)
                key += (last.listed ? "" : "-") + last.version + (last.managed ? "m" : "") +
                       (last.online ? "o" : "") + (last.busy ? "b" : "") +
                       (last.uptime > 0 ? "u" : "");
            if (watch.held >= 0)
                key += watch.last.version + std::to_string(watch.last.change_time);
            const double now = (state.silent_since >= 0 ? state.silent_since : state.now) -
                               state.machine.lost_time();
            const bool is_asked = step.asked >= 0;
            key +=
                key_of_time(!is_asked || step.reply_lost, step.entered, now, BEGIN) +
                key_of_time(is_asked, step.asked, now, DEADLINE) +
                key_of_time(step.looks > 0 && is_asked, step.looks_since, now, RETURN) +
                key_of_time(device.stage == UpgradeStage::settling, step.held_since, now, SETTLE) +
                key_of_time(is_asked && !step.restarted, step.asked_real, state.now, 1) +
                key_of_time(watch.held >= 0, 0, watch.held, SETTLE);
        }
        return key;
    }

    // What runs is judged as the plan has seen it.
    void begun(State &state) const override
    {
        for (const Mac &mac : state.machine.watched())
            if (Watch &device = state.of(mac); device.last.busy)
                device.announced = device.last.announced;
    }

    void note(State &state, const Looks &looks) const override
    {
        const double passed = state.served - state.served_at_look;
        for (const Mac &mac : state.machine.watched()) {
            Watch &device = state.of(mac);
            const Observation &sight = looks.at(mac);
            const bool rests = sight.listed && sight.online && !sight.busy;
            if (sight.listed && (!sight.online || sight.uptime < device.uptime ||
                                 sight.uptime + 1 <= state.now - device.asked_at))
                device.restarted = true;
            const bool goes_on = rests && device.last.listed && device.last.online &&
                                 !device.last.busy && sight.version == device.last.version &&
                                 sight.change_time == device.last.change_time && device.held >= 0;
            device.held = !rests || !device.restarted ? -1 : goes_on ? device.held + passed : 0;
            device.rested = device.rested || rests;
            if (sight.busy && !sight.announced.empty())
                device.announced = sight.announced;
            device.last = sight;
        }
    }

    void ask(State &state, const Mac &mac, int code, bool stops) const override
    {
        state.machine.ask({mac});
        if (stops)
            state.machine.halt(Halt::signal);
        Watch &device = state.of(mac);
        const bool was_lost = device.lost;
        const bool may_be_taken = code < 0 || code == RESULT_NO_RESPONSE;
        if (code == RESULT_SUCCESS || may_be_taken || (code == RESULT_BUSY && was_lost)) {
            device.asked = true;
            device.is_open = !may_be_taken;
            device.lost = may_be_taken;
            device.rested = device.restarted = false;
            device.held = -1;
            device.uptime = device.last.uptime;
            device.asked_at = state.now;
        }
        if (code == RESULT_NO_IMAGE)
            device.newest = device.last.version;
        if (code < 0)
            state.machine.unanswered({mac}, state.now);
        else
            state.machine.answered(mac, static_cast<uint8_t>(code), state.now);
    }

    void expand_more(const State &state) override
    {
        for (const Mac &mac : state.machine.unclear())
            for (const unsigned left : {0U, 1U}) {
                State next = state.after("left" + std::to_string(left));
                if (left == 0)
                    next.of(mac).newest = next.of(mac).last.version;
                next.machine.steps_known(mac, left, next.now);
                add(std::move(next));
            }
    }

    // Notes which steps are over; then looks at what is done.
    void check_done(State &state) const override
    {
        SCOPED_TRACE(state.path);
        for (const RollDevice &device : state.machine.devices()) {
            Watch &known = state.of(device.mac);
            if (device.steps_done > known.steps_done && !device.finished()) {
                known.is_open = known.lost = false;
                known.announced.clear();
                known.newest.clear();
            }
            known.steps_done = device.steps_done;
        }
        for (const RollDevice &device : state.machine.devices()) {
            const Watch &watch = state.of(device.mac);
            if (device.stage != UpgradeStage::done || device.batch != state.machine.batch())
                continue;
            const std::string &version = watch.last.version;
            EXPECT_TRUE(watch.last.online && !watch.last.busy) << "done though not online";
            EXPECT_TRUE(watch.restarted) << "done without a restart";
            EXPECT_GE(watch.held, SETTLE) << "done though not settled";
            EXPECT_TRUE(fleet_.limits.to.empty()
                            ? version == watch.announced || version == watch.newest
                            : version == fleet_.limits.to)
                << "done with version " << version;
        }
    }

    void check(const State &state) const override
    {
        size_t in_flight = 0;
        for (const RollDevice &device : state.machine.devices()) {
            const Watch &watch = state.of(device.mac);
            in_flight += watch.asked && !device.finished();
            EXPECT_FALSE(device.batch == 0 && watch.asked) << "asked, but called not started";
            EXPECT_FALSE(device.current && device.stage != UpgradeStage::skipped)
                << "called up to date, but not skipped";
            EXPECT_TRUE(state.machine.halted() == Halt::none ||
                        device.batch != state.machine.batch() ||
                        device.stage != UpgradeStage::waiting || watch.asked)
                << "waits for its turn after the stop";
        }
        EXPECT_LE(in_flight, fleet_.largest) << "too many in flight";
        for (const Mac &mac : state.machine.pending()) {
            const Watch &device = state.of(mac);
            EXPECT_FALSE(device.is_open) << "asked again in the same step";
            EXPECT_TRUE(device.last.managed) << "asked though unmanaged";
            EXPECT_TRUE(!device.lost || device.rested) << "asked again though not seen at rest";
            EXPECT_TRUE(state.machine.halted() == Halt::none ||
                        (device.asked && device.steps_done > 0 && !device.lost))
                << "begun after the stop";
        }
    }

    const Fleet &fleet_;
};

RollDevice device(uint8_t number, size_t batch, unsigned steps, bool followed = false)
{
    RollDevice made;
    made.mac = {{2, 0, 0, 0, 0, number}};
    made.model = "model";
    made.from = "1";
    made.batch = batch;
    made.steps_left = steps;
    made.followed = made.foreign = followed;
    made.last = SIGHTS[followed ? 4 : 7];
    if (followed)
        made.stage = UpgradeStage::upgrading;
    return made;
}

RollLimits limits(const char *to = "", bool allow_older = false)
{
    return {1, 1, DEADLINE, BEGIN, SETTLE, OUTAGE, RETURN, to, allow_older};
}

} // namespace

TEST(RollExploration, TwoDevicesOneAtATime)
{
    const Fleet fleets[] = {
        {"one step", {device(0, 1, 1), device(1, 2, 1)}, limits(), 1, USUAL, 122000},
        {"strange", {device(0, 1, 1), device(1, 2, 1)}, limits(), 1, STRANGE, 300000},
        {"older", {device(0, 1, 1), device(1, 2, 1)}, limits("", true), 1, STRANGE, 385000},
        {"to 2", {device(0, 1, 1), device(1, 2, 1)}, limits("2"), 1, STRANGE, 40000},
        {"two steps", {device(0, 1, 2), device(1, 2, 1)}, limits(), 1, STEPS, 360000},
    };
    for (const Fleet &fleet : fleets) {
        Explorer explorer(fleet);
        explorer.run(SIZE_MAX);
        EXPECT_EQ(explorer.is_complete(), is_whole());
    }
}

// Fleets with too many states to see them all.
TEST(RollExploration, SeveralAtATime)
{
    const Fleet fleets[] = {
        {"three", {device(0, 1, 1), device(1, 1, 2), device(2, 2, 1)}, limits(), 2, STEPS, 200000},
        {"followed", {device(0, 1, 0, true), device(1, 1, 0, true)}, limits(), 1, STEPS, 200000},
    };
    for (const Fleet &fleet : fleets)
        Explorer(fleet).run(fleet.states);
}
