// SPDX-License-Identifier: MIT
// The states of a machine, each looked at once.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <gtest/gtest.h>
#include <string>
#include <unordered_set>
#include <utility>

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

template <class State> class StateSpace {
public:
    // Whether no state with this key was seen before; then it is kept if it goes on from there.
    bool is_new(const std::string &key) { return known_.insert(key).second; }
    void keep(State state) { states_.push_back(std::move(state)); }

    // Calls expand(state) for `most` states, or all. The newest and the oldest in turn: a part of
    // the states has short and long ways.
    template <class Expand> void run(size_t most, Expand expand)
    {
        while (!states_.empty() && known_.size() < most && !::testing::Test::HasFailure()) {
            const bool newest = known_.size() % 2 == 0;
            const State state = std::move(newest ? states_.back() : states_.front());
            newest ? states_.pop_back() : states_.pop_front();
            expand(state);
        }
    }

    size_t size() const { return known_.size(); }
    bool is_complete() const { return states_.empty(); }

private:
    std::unordered_set<std::string> known_;
    std::deque<State> states_;
};
