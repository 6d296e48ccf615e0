// SPDX-License-Identifier: MIT
// The machine of an apply in every order of events, with a second bookkeeping of what may never
// happen. With ZOV_EXPLORE=all until no new state appears, else a few thousand of them.
#include "apply/apply.h"
#include "proto/result_code.h"
#include "tests/unit/state_space.h"

#include <gtest/gtest.h>

namespace {

constexpr double SETTLE = 2, BEGIN = 2, DEADLINE = 5, OUTAGE = 2;
constexpr int LOST = -1;

ApplyLook seen(bool online, Stored stored, uint32_t change_time = 0, bool managed = true,
               bool busy = false)
{
    return {true, managed, online, busy, change_time, stored, ""};
}

const std::vector<ApplyLook> SIGHTS = {
    {}, // not in the list
    seen(true, Stored::as_confirmed),
    seen(true, Stored::as_wanted),
    seen(true, Stored::as_wanted, 7), // it was away in between
    seen(true, Stored::other),
    seen(true, Stored::unread),
    seen(false, Stored::as_confirmed),
    seen(false, Stored::as_wanted),
    seen(true, Stored::as_confirmed, 0, false), // unmanaged
    seen(true, Stored::as_wanted, 0, true, true),
};

// What is known of a device from the events alone.
struct Watch {
    unsigned sent = 0, lost = 0;
    bool is_taken = false, is_refused = false;
    bool is_seen = false; // since the last answer
    double held = -1;     // how long it has been online and as wanted, -1: it is not
    ApplyLook last;
};

Nobody<Apply::Listener, ApplyDevice> nobody;

class Explorer : public Exploration<Apply, Watch, ApplyLook> {
public:
    explicit Explorer(size_t largest)
        : Exploration(
              {{1, DEADLINE},
               SIGHTS,
               {0, 1, 2, 3, 4, 5, 6, 7, 8, 9},
               {1, 2, 5, 6},
               {RESULT_SUCCESS, RESULT_BUSY, RESULT_NO_RESPONSE, RESULT_BAD_CONFIGURATION, LOST}}),
          largest_(largest)
    {
    }

private:
    void look(Apply &apply, const Looks &looks, double now) const override
    {
        apply.look(looks, now);
    }

    std::string key_of(const State &state) const override
    {
        const bool is_silent = state.silent_since >= 0;
        std::string key = std::to_string(state.machine.batch()) +
                          std::to_string(static_cast<int>(state.machine.halted())) +
                          std::to_string(state.machine.failures()) +
                          (is_silent ? key_of_time(state.silent_since, state.now, OUTAGE) : "-");
        for (const ApplyDevice &device : state.machine.devices()) {
            const Watch &watch = state.of(device.mac);
            key += device.finished() ? "|" : "|" + std::to_string(static_cast<int>(device.stage));
            if (device.finished()) // its past decides nothing any more
                continue;
            for (const bool flag : {device.looked, device.is_taken, !device.refusal.empty(),
                                    device.is_patient, !device.reason.empty(), watch.is_seen})
                key += flag ? '1' : '0';
            for (const size_t number :
                 {device.batch, size_t{device.losses}, size_t{watch.sent > 0},
                  static_cast<size_t>(device.last.stored), size_t{device.last.listed},
                  size_t{device.last.online}, size_t{device.last.managed}, size_t{device.last.busy},
                  size_t{device.last.change_time}})
                key += std::to_string(number) + ",";
            key += key_of_time(device.entered, state.served, BEGIN) +
                   (watch.sent > 0 ? key_of_time(device.sent, state.served, DEADLINE) : "") +
                   (device.stage == ApplyStage::settling && device.held_since >= 0
                        ? key_of_time(device.held_since, state.served, SETTLE)
                        : "") +
                   key_of_time(0, watch.held, SETTLE);
        }
        return key;
    }

    void note(State &state, const Looks &looks) const override
    {
        const double passed = state.served - state.served_at_look;
        for (const Mac &mac : state.machine.watched()) {
            Watch &device = state.of(mac);
            const ApplyLook &sight = looks.at(mac);
            const bool is_so =
                sight.listed && sight.online && !sight.busy && sight.stored == Stored::as_wanted;
            const bool was_so = device.held >= 0 && sight.change_time == device.last.change_time;
            device.held = !is_so || !device.is_taken ? -1 : was_so ? device.held + passed : 0;
            device.is_seen = true;
            device.last = sight;
        }
    }

    void ask(State &state, const Mac &mac, int code, bool stops) const override
    {
        state.machine.ask({mac}, state.now);
        if (stops)
            state.machine.halt(Halt::signal);
        Watch &device = state.of(mac);
        device.sent += code != RESULT_BUSY || device.lost > 0;
        device.is_seen = false;
        device.held = -1;
        if (code == LOST) {
            device.lost++;
            state.machine.unanswered({mac}, state.now);
            return;
        }
        device.is_taken = code == RESULT_SUCCESS;
        device.is_refused = !device.is_taken && (code != RESULT_BUSY || device.lost > 0);
        state.machine.answered(mac, static_cast<uint8_t>(code), code == 0 ? "" : "text", state.now);
    }

    void check_done(State &state) const override
    {
        SCOPED_TRACE(state.path);
        for (const ApplyDevice &device : state.machine.devices()) {
            const Watch &watch = state.of(device.mac);
            if (device.stage != ApplyStage::done || device.batch != state.machine.batch())
                continue;
            EXPECT_TRUE(watch.is_taken && !watch.is_refused) << "done without a good answer";
            EXPECT_GE(watch.held, SETTLE) << "done though not so for the time to settle";
        }
    }

    void check(const State &state) const override
    {
        const bool is_halted = state.machine.halted() != Halt::none;
        size_t in_change = 0;
        for (const ApplyDevice &device : state.machine.devices()) {
            const Watch &watch = state.of(device.mac);
            in_change += watch.sent > 0 && !device.finished();
            EXPECT_TRUE(watch.sent == 0 || (device.stage != ApplyStage::waiting &&
                                            device.stage != ApplyStage::skipped))
                << "sent, but called not started or skipped";
            EXPECT_FALSE(is_halted && device.batch == state.machine.batch() &&
                         device.stage == ApplyStage::waiting)
                << "waits for its turn after the stop";
            EXPECT_LE(watch.lost, 2U) << "sent again and again without an answer";
        }
        EXPECT_LE(in_change, largest_) << "more than a batch in change";
        for (const Mac &mac : state.machine.pending()) {
            const Watch &watch = state.of(mac);
            EXPECT_EQ(state.machine.find(mac)->batch, state.machine.batch());
            EXPECT_FALSE(watch.is_taken || watch.is_refused) << "sent again after an answer";
            EXPECT_TRUE(watch.is_seen && watch.last.listed && watch.last.online &&
                        watch.last.managed && !watch.last.busy)
                << "sent, but not seen ready";
            EXPECT_TRUE(watch.last.stored == Stored::as_confirmed ||
                        (watch.lost == 1 && watch.last.stored == Stored::as_wanted))
                << "sent, but it is not as confirmed";
            EXPECT_TRUE(!is_halted || watch.lost == 1) << "begun after the stop";
        }
    }

    size_t largest_; // batch
};

ApplyDevice device(uint8_t number, size_t batch)
{
    ApplyDevice made;
    made.mac = {{2, 0, 0, 0, 0, number}};
    made.batch = batch;
    return made;
}

} // namespace

TEST(ApplyExploration, EveryOrderOfEvents)
{
    const struct {
        const char *name;
        std::vector<ApplyDevice> devices;
        size_t largest, most, states; // batch; to look at; at least so many there are
    } fleets[] = {
        {"one at a time", {device(0, 1), device(1, 2)}, 1, SIZE_MAX, 8000},
        {"two", {device(0, 1), device(1, 1)}, 2, SIZE_MAX, 1300000},
        {"three", {device(0, 1), device(1, 1), device(2, 2)}, 2, 200000, 200000},
    };
    for (const auto &fleet : fleets) {
        Explorer::State first{
            .machine = Apply(fleet.devices, {1, DEADLINE, BEGIN, SETTLE, OUTAGE}, nobody)};
        first.watch.resize(fleet.devices.size());
        Explorer(fleet.largest)
            .run(fleet.name, std::move(first), is_whole() ? fleet.most : STATES_USUAL,
                 is_whole() ? fleet.states : STATES_USUAL);
    }
}
