// SPDX-License-Identifier: MIT
// The states of a machine, each looked at once, and the events that lead from one to the others.
#pragma once

#include "course/driver.h"
#include "proto/result_code.h"

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <gtest/gtest.h>
#include <iostream>
#include <map>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

// Without ZOV_EXPLORE=all a few thousand states are looked at.
inline constexpr size_t STATES_USUAL = 8000;
inline bool is_whole()
{
    return getenv("ZOV_EXPLORE") != nullptr;
}

// A time counts as far as its limit.
inline std::string key_of_time(double since, double now, double limit)
{
    return std::to_string(static_cast<int>(std::min(now - since, limit))) + ",";
}

// A machine, what is known of each device from the events alone, and the events that led there.
template <class Machine, class Watch> struct MachineState {
    Machine machine;
    std::vector<Watch> watch{};
    double now = 0, silent_since = -1;
    double served = 0, served_at_look = 0; // time in which the controller was not silent
    std::string path{};

    MachineState after(const std::string &event) const
    {
        MachineState next = *this;
        next.path += " " + event;
        return next;
    }
    Watch &of(const Mac &mac) { return watch[mac.byte[5]]; }
    const Watch &of(const Mac &mac) const { return watch[mac.byte[5]]; }
};

// Plays a machine in every order of events: looks that show some sights of each device, silence,
// answers, a stop. A derived class says what a look and a request mean, and what may never happen.
template <class Machine, class Watch, class Look> class Exploration {
public:
    using State = MachineState<Machine, Watch>;
    using Looks = std::map<Mac, Look>;

    // Looks at `most` states, or all; there have to be `least`. The newest and the oldest in turn:
    // a part of the states has short and long ways.
    void run(const char *name, State first, size_t most, size_t least)
    {
        SCOPED_TRACE(name);
        add(std::move(first));
        while (!states_.empty() && known_.size() < most && !::testing::Test::HasFailure()) {
            const bool newest = known_.size() % 2 == 0;
            const State state = std::move(newest ? states_.back() : states_.front());
            newest ? states_.pop_back() : states_.pop_front();
            expand(state);
        }
        std::cout << name << ": " << known_.size() << (states_.empty() ? " states, all" : " states")
                  << std::endl;
        EXPECT_GE(known_.size(), least);
    }
    bool is_complete() const { return states_.empty(); }

protected:
    // Seconds between looks, all sights, those that are shown and those that may stay, answers.
    struct Events {
        std::vector<double> times;
        const std::vector<Look> &sights;
        std::vector<size_t> shown, lasting;
        std::vector<int> codes;
    };
    explicit Exploration(Events events) : events_(std::move(events)) {}
    virtual ~Exploration() = default;

    virtual std::string key_of(const State &state) const = 0;
    // Notes what a look shows; gives it to the machine.
    virtual void note(State &state, const Looks &looks) const = 0;
    virtual void look(Machine &machine, const Looks &looks, double now) const = 0;
    // One device is asked; a negative code: no reply comes. A stop may come before the reply does.
    virtual void ask(State &state, const Mac &mac, int code, bool stops) const = 0;
    virtual void begun(State &) const {} // a batch
    virtual void expand_more(const State &) {}
    virtual void answer_more(State &) const {}
    virtual void check_done(State &state) const = 0; // in the batch that may be ending
    virtual void check(const State &state) const = 0;

    void add(State state)
    {
        check_done(state);
        while (!state.machine.is_running() && state.machine.begin_batch(state.now)) {
            state.silent_since = -1;
            begun(state);
        }
        if (!known_.insert(key_of(state)).second)
            return;
        SCOPED_TRACE(state.path);
        check(state);
        check_end(state, nullptr, 0);
        if (known_.size() % 16 == 0)
            for (const size_t sight : events_.lasting)
                for (const int code : {int{RESULT_BUSY}, -1, int{RESULT_SUCCESS}})
                    check_end(state, &events_.sights[sight], code);
        if (state.machine.is_running())
            states_.push_back(std::move(state));
    }

private:
    void expand_looks(const State &state, double time)
    {
        const std::vector<Mac> watched = state.machine.watched();
        size_t lists = 1;
        for (size_t i = 0; i < watched.size(); i++)
            lists *= events_.shown.size();
        for (size_t number = 0; number < lists; number++) {
            State next = state.after("+" + std::to_string(static_cast<int>(time)));
            next.now += time;
            next.served += state.silent_since < 0 ? time : 0;
            Looks looks;
            size_t rest = number;
            for (const Mac &mac : watched) {
                const size_t sight = events_.shown[rest % events_.shown.size()];
                looks[mac] = events_.sights[sight];
                next.path += " sight" + std::to_string(sight);
                rest /= events_.shown.size();
            }
            note(next, looks);
            look(next.machine, looks, next.now);
            next.served_at_look = next.served;
            next.silent_since = -1;
            add(std::move(next));
        }
    }

    void expand(const State &state)
    {
        for (const double time : events_.times) {
            expand_looks(state, time);
            State next = state.after("silent" + std::to_string(static_cast<int>(time)));
            if (next.silent_since < 0)
                next.silent_since = next.now;
            next.now += time;
            next.machine.silent(next.silent_since, next.now);
            add(std::move(next));
        }
        for (const Mac &mac : state.machine.pending())
            for (const int code : events_.codes)
                for (const bool stops : {false, true}) {
                    State next =
                        state.after((stops ? "stop+answer" : "answer") + std::to_string(code));
                    ask(next, mac, code, stops);
                    add(std::move(next));
                }
        expand_more(state);
        State next = state.after("stop");
        next.machine.halt(Halt::signal);
        add(std::move(next));
    }

    // It ends when the controller stays silent; and when all devices stay as they are, whatever is
    // answered.
    void check_end(State state, const Look *sight, int code) const
    {
        for (int i = 0; i < 60; i++) {
            if (!state.machine.is_running() && !state.machine.begin_batch(state.now))
                return;
            state.now += 1;
            if (sight == nullptr) {
                state.machine.silent(state.now - i - 1, state.now);
                continue;
            }
            Looks looks;
            for (const Mac &mac : state.machine.watched())
                looks[mac] = *sight;
            look(state.machine, looks, state.now);
            if (i % 2 == 1) // every second look fails
                state.machine.silent(state.now - 0.5, state.now);
            answer_more(state);
            for (const Mac &mac : state.machine.pending())
                ask(state, mac, code, false);
        }
        ADD_FAILURE() << "it never ends";
    }

    const Events events_;
    std::unordered_set<std::string> known_;
    std::deque<State> states_; // to go on from
};

// Who is told of changes: nobody.
template <class Listener, class Device> struct Nobody : Listener {
    void changed(const Device &) override {}
};
