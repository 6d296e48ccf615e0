// SPDX-License-Identifier: MIT
// The machine of an apply in every order of events, with a second bookkeeping of what may never
// happen. With ZOV_EXPLORE=all until no new state appears, else a few thousand of them.
#include "apply/apply.h"
#include "proto/result_code.h"
#include "tests/unit/state_space.h"

#include <gtest/gtest.h>
#include <iostream>

namespace {

constexpr double SETTLE = 2, BEGIN = 2, DEADLINE = 5, OUTAGE = 2;
constexpr double TIMES[] = {1, DEADLINE};
constexpr int LOST = -1;
constexpr int CODES[] = {RESULT_SUCCESS, RESULT_BUSY, RESULT_NO_RESPONSE, RESULT_BAD_CONFIGURATION,
                         LOST};

ApplyLook seen(bool online, Stored stored, uint32_t change_time = 0, bool managed = true,
               bool busy = false)
{
    return {true, managed, online, busy, change_time, stored, ""};
}

const ApplyLook SIGHTS[] = {
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

struct Silent : Apply::Listener {
    void changed(const ApplyDevice &) override {}
};
Silent nobody;

struct State {
    Apply apply;
    std::vector<Watch> watch{};
    double now = 0, silent_since = -1;
    double served = 0, served_at_look = 0; // time in which the controller was not silent
    std::string path{};                    // the events that led here

    State after(const std::string &event) const
    {
        State next = *this;
        next.path += " " + event;
        return next;
    }
    Watch &of(const Mac &mac) { return watch[mac.byte[5]]; }
    const Watch &of(const Mac &mac) const { return watch[mac.byte[5]]; }
};

class Explorer {
public:
    Explorer(std::vector<ApplyDevice> devices, size_t largest)
        : devices_(std::move(devices)), largest_(largest)
    {
    }

    // Looks at `most` states, or all; returns how many there were.
    size_t run(size_t most)
    {
        State first{.apply = Apply(devices_, {1, DEADLINE, BEGIN, SETTLE, OUTAGE}, nobody)};
        first.watch.resize(devices_.size());
        add(std::move(first));
        space_.run(most, [this](const State &state) { expand(state); });
        return space_.size();
    }

    bool is_complete() const { return space_.is_complete(); }

private:
    std::string key_of(const State &state) const;
    void add(State state);
    void expand(const State &state);
    void look(State &state, const std::map<Mac, ApplyLook> &list) const;
    void ask(State &state, const Mac &mac, int code, bool stops = false) const;
    void check(const State &state) const;
    void check_done(const State &state) const;
    void check_end(State state, const ApplyLook *sight, int code) const;

    std::vector<ApplyDevice> devices_;
    size_t largest_; // batch
    StateSpace<State> space_;
};

std::string Explorer::key_of(const State &state) const
{
    const bool is_silent = state.silent_since >= 0;
    std::string key = std::to_string(state.apply.batch()) +
                      std::to_string(static_cast<int>(state.apply.halted())) +
                      std::to_string(state.apply.failures()) +
                      (is_silent ? key_of_time(state.silent_since, state.now, OUTAGE) : "-");
    for (const ApplyDevice &device : state.apply.devices()) {
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

void Explorer::add(State state)
{
    check_done(state);
    while (!state.apply.is_running() && state.apply.begin_batch(state.now))
        state.silent_since = -1;
    if (!space_.is_new(key_of(state)))
        return;
    check(state);
    if (state.apply.is_running())
        space_.keep(std::move(state));
}

void Explorer::look(State &state, const std::map<Mac, ApplyLook> &list) const
{
    const double passed = state.served - state.served_at_look;
    for (const Mac &mac : state.apply.watched()) {
        Watch &device = state.of(mac);
        const ApplyLook &sight = list.at(mac);
        const bool is_so =
            sight.listed && sight.online && !sight.busy && sight.stored == Stored::as_wanted;
        const bool was_so = device.held >= 0 && sight.change_time == device.last.change_time;
        device.held = !is_so || !device.is_taken ? -1 : was_so ? device.held + passed : 0;
        device.is_seen = true;
        device.last = sight;
    }
    state.apply.look(list, state.now);
    state.served_at_look = state.served;
    state.silent_since = -1;
}

// One device is sent its settings. A stop may come before the answer does.
void Explorer::ask(State &state, const Mac &mac, int code, bool stops) const
{
    state.apply.ask({mac}, state.now);
    if (stops)
        state.apply.halt(Halt::signal);
    Watch &device = state.of(mac);
    device.sent += code != RESULT_BUSY || device.lost > 0;
    device.is_seen = false;
    device.held = -1;
    if (code == LOST) {
        device.lost++;
        state.apply.unanswered({mac}, state.now);
        return;
    }
    device.is_taken = code == RESULT_SUCCESS;
    device.is_refused = !device.is_taken && (code != RESULT_BUSY || device.lost > 0);
    state.apply.answered(mac, static_cast<uint8_t>(code), code == 0 ? "" : "text", state.now);
}

void Explorer::expand(const State &state)
{
    const std::vector<Mac> watched = state.apply.watched();
    size_t lists = 1;
    for (size_t i = 0; i < watched.size(); i++)
        lists *= std::size(SIGHTS);
    for (const double time : TIMES) {
        for (size_t number = 0; number < lists; number++) {
            State next = state.after("+" + std::to_string(static_cast<int>(time)));
            next.now += time;
            next.served += state.silent_since < 0 ? time : 0;
            std::map<Mac, ApplyLook> list;
            size_t rest = number;
            for (const Mac &mac : watched) {
                list[mac] = SIGHTS[rest % std::size(SIGHTS)];
                next.path += " sight" + std::to_string(rest % std::size(SIGHTS));
                rest /= std::size(SIGHTS);
            }
            look(next, list);
            add(std::move(next));
        }
        State next = state.after("silent" + std::to_string(static_cast<int>(time)));
        if (next.silent_since < 0)
            next.silent_since = next.now;
        next.now += time;
        next.apply.silent(next.silent_since, next.now);
        add(std::move(next));
    }
    for (const Mac &mac : state.apply.pending())
        for (const int code : CODES)
            for (const bool stops : {false, true}) {
                State next = state.after((stops ? "stop+answer" : "answer") + std::to_string(code));
                ask(next, mac, code, stops);
                add(std::move(next));
            }
    State next = state.after("stop");
    next.apply.halt(Halt::signal);
    add(std::move(next));
}

void Explorer::check_done(const State &state) const
{
    SCOPED_TRACE(state.path);
    for (const ApplyDevice &device : state.apply.devices()) {
        const Watch &watch = state.of(device.mac);
        if (device.stage != ApplyStage::done || device.batch != state.apply.batch())
            continue;
        EXPECT_TRUE(watch.is_taken && !watch.is_refused) << "done without a good answer";
        EXPECT_GE(watch.held, SETTLE) << "done though not so for the time to settle";
    }
}

void Explorer::check(const State &state) const
{
    SCOPED_TRACE(state.path);
    const bool is_halted = state.apply.halted() != Halt::none;
    size_t in_change = 0;
    for (const ApplyDevice &device : state.apply.devices()) {
        const Watch &watch = state.of(device.mac);
        in_change += watch.sent > 0 && !device.finished();
        EXPECT_TRUE(watch.sent == 0 ||
                    (device.stage != ApplyStage::waiting && device.stage != ApplyStage::skipped))
            << "sent, but called not started or skipped";
        EXPECT_FALSE(is_halted && device.batch == state.apply.batch() &&
                     device.stage == ApplyStage::waiting)
            << "waits for its turn after the stop";
        EXPECT_LE(watch.lost, 2U) << "sent again and again without an answer";
    }
    EXPECT_LE(in_change, largest_) << "more than a batch in change";
    for (const Mac &mac : state.apply.pending()) {
        const Watch &watch = state.of(mac);
        EXPECT_EQ(state.apply.find(mac)->batch, state.apply.batch());
        EXPECT_FALSE(watch.is_taken || watch.is_refused) << "sent again after an answer";
        EXPECT_TRUE(watch.is_seen && watch.last.listed && watch.last.online && watch.last.managed &&
                    !watch.last.busy)
            << "sent, but not seen ready";
        EXPECT_TRUE(watch.last.stored == Stored::as_confirmed ||
                    (watch.lost == 1 && watch.last.stored == Stored::as_wanted))
            << "sent, but it is not as confirmed";
        EXPECT_TRUE(!is_halted || watch.lost == 1) << "begun after the stop";
    }
    check_end(state, nullptr, 0);
    if (space_.size() % 16 == 0)
        for (const size_t sight : {1U, 2U, 5U, 6U})
            for (const int code : {int{RESULT_BUSY}, LOST, int{RESULT_SUCCESS}})
                check_end(state, &SIGHTS[sight], code);
}

// It ends when the controller stays silent; and when all devices stay as they are, whatever is
// answered.
void Explorer::check_end(State state, const ApplyLook *sight, int code) const
{
    for (int i = 0; i < 60; i++) {
        if (!state.apply.is_running() && !state.apply.begin_batch(state.now))
            return;
        state.now += 1;
        if (sight == nullptr) {
            state.apply.silent(state.now - i - 1, state.now);
            continue;
        }
        std::map<Mac, ApplyLook> list;
        for (const Mac &mac : state.apply.watched())
            list[mac] = *sight;
        state.apply.look(list, state.now);
        if (i % 2 == 1) // every second look fails
            state.apply.silent(state.now - 0.5, state.now);
        for (const Mac &mac : state.apply.pending())
            ask(state, mac, code);
    }
    ADD_FAILURE() << "it never ends";
}

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
    struct Fleet {
        std::vector<ApplyDevice> devices;
        size_t largest, states; // at least so many states there are
    };
    const Fleet fleets[] = {
        {{device(0, 1), device(1, 2)}, 1, 8000},
        {{device(0, 1), device(1, 1)}, 2, 1300000},
        {{device(0, 1), device(1, 1), device(2, 2)}, 2, 200000},
    };
    for (const Fleet &fleet : fleets) {
        Explorer explorer(fleet.devices, fleet.largest);
        const size_t states = explorer.run(!is_whole()              ? STATES_USUAL
                                           : fleet.states == 200000 ? fleet.states
                                                                    : SIZE_MAX);
        std::cout << states << " states, " << (explorer.is_complete() ? "all" : "of more")
                  << std::endl;
        EXPECT_GE(states, std::min(is_whole() ? fleet.states : STATES_USUAL, fleet.states));
    }
}
