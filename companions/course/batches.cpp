// SPDX-License-Identifier: MIT
#include "course/batches.h"

#include "common/command_line.h"
#include "proto/device_kind.h"

#include <algorithm>

using Positions = std::vector<size_t>;

static constexpr uint32_t DEVICES_MAX = 10000; // in a batch, and in a request

bool take_share(const char *text, uint32_t low, Share &share)
{
    std::string number = text;
    share.percent = number.ends_with('%');
    if (share.percent)
        number.pop_back();
    return take_number<uint32_t>(number.c_str(), share.percent ? std::min<uint32_t>(low, 1) : low,
                                 share.percent ? 100 : DEVICES_MAX, share.number);
}

bool take_batch_sizes(const char *text, std::vector<Share> &sizes)
{
    sizes.clear();
    for (std::string_view rest = text;;) {
        const size_t comma = std::min(rest.find(','), rest.size());
        if (!take_share(std::string(rest.substr(0, comma)).c_str(), 1, sizes.emplace_back()))
            return false;
        if (comma == rest.size())
            return true;
        rest.remove_prefix(comma + 1);
    }
}

namespace {

class Batcher {
public:
    Batcher(const std::vector<BatchDevice> &devices, const BatchPlan &plan)
        : devices_(devices), plan_(plan)
    {
    }

    void add_in_order()
    {
        for (size_t i = 0; i < devices_.size(); i++) {
            if (i == 0 || is_full() || kind_of(i) != kind_of(batches_.back().back()))
                batches_.emplace_back();
            batches_.back().push_back(i);
        }
    }

    void add_spread(Positions positions);
    void add_switches(const Positions &positions);

    std::vector<Positions> take() { return std::move(batches_); }

private:
    uint8_t kind_of(size_t position) const { return devices_[position].kind; }

    // The size of the batch with this number, from 0.
    size_t size_of(size_t batch) const
    {
        const Share &share = plan_.sizes[std::min(batch, plan_.sizes.size() - 1)];
        return std::clamp<size_t>(share.of(plan_.chosen), 1, DEVICES_MAX);
    }

    bool is_full() const { return batches_.back().size() >= size_of(batches_.size() - 1); }

    const std::vector<BatchDevice> &devices_;
    const BatchPlan &plan_;
    std::vector<Positions> batches_;
};

// Devices that are lost together when their switch is, or their floor.
struct Group {
    Positions positions;
    size_t share = 0, rest = 0; // of the batch that is made: whole devices, and what is left over
};

// `count` of the positions, evenly from all of them.
void take_evenly(Positions &from, size_t count, Positions &to)
{
    Positions kept;
    for (size_t i = 0, taken = 0; i < from.size(); i++) {
        const bool due = taken < count && i >= taken * from.size() / count;
        taken += due;
        (due ? to : kept).push_back(from[i]);
    }
    from = std::move(kept);
}

// Each group gives to each batch what its part of the remaining devices is; the largest remainders
// fill it up.
void Batcher::add_spread(Positions positions)
{
    std::map<Mac, Mac> switch_of;
    for (const auto &[mac, neighbours] : plan_.links)
        for (const Mac &neighbour : neighbours)
            switch_of.emplace(neighbour, mac);
    std::sort(positions.begin(), positions.end(), [this](size_t a, size_t b) {
        return devices_[a].name != devices_[b].name ? devices_[a].name < devices_[b].name : a < b;
    });
    std::map<Mac, Group> by_switch; // zero: none
    for (const size_t position : positions) {
        const auto found = switch_of.find(devices_[position].mac);
        by_switch[found == switch_of.end() ? Mac() : found->second].positions.push_back(position);
    }
    std::vector<Group> groups;
    groups.reserve(by_switch.size());
    for (auto &[mac, group] : by_switch)
        groups.push_back(std::move(group));
    for (size_t left = positions.size(); left > 0;) {
        batches_.emplace_back();
        const size_t size = std::min(size_of(batches_.size() - 1), left);
        size_t missing = size;
        for (Group &group : groups) {
            group.share = group.positions.size() * size / left;
            group.rest = group.positions.size() * size % left;
            missing -= group.share;
        }
        std::stable_sort(groups.begin(), groups.end(),
                         [](const Group &a, const Group &b) { return a.rest > b.rest; });
        for (Group &group : groups) {
            group.share += missing > 0;
            missing -= missing > 0;
            take_evenly(group.positions, group.share, batches_.back());
        }
        std::sort(batches_.back().begin(), batches_.back().end());
        left -= size;
    }
}

// The switches of the links and of the positions, from the edge inwards: again and again those that
// are linked to one of the others at most, or, in a ring, the first address.
std::vector<Mac> from_the_edge(std::map<Mac, std::set<Mac>> links)
{
    std::vector<Mac> order;
    const auto place = [&](const Mac &mac) {
        order.push_back(mac);
        for (const Mac &neighbour : links.at(mac))
            links.at(neighbour).erase(mac);
        links.erase(mac);
    };
    while (!links.empty()) {
        std::vector<Mac> edge;
        for (const auto &[mac, neighbours] : links)
            if (neighbours.size() <= 1)
                edge.push_back(mac);
        if (edge.empty())
            edge.push_back(links.begin()->first);
        for (const Mac &mac : edge)
            place(mac);
    }
    return order;
}

void Batcher::add_switches(const Positions &positions)
{
    std::map<Mac, std::set<Mac>> links; // between switches
    std::map<Mac, size_t> by_mac;
    for (const size_t position : positions) {
        by_mac[devices_[position].mac] = position;
        links[devices_[position].mac];
    }
    for (const auto &[mac, neighbours] : plan_.links)
        links[mac];
    for (const auto &[mac, neighbours] : plan_.links)
        for (const Mac &neighbour : neighbours)
            if (links.count(neighbour) != 0 && neighbour != mac) {
                links[mac].insert(neighbour);
                links[neighbour].insert(mac);
            }
    bool begins = true;
    for (const Mac &mac : from_the_edge(links)) {
        const auto found = by_mac.find(mac);
        if (found == by_mac.end())
            continue;
        const bool linked =
            !begins &&
            std::any_of(batches_.back().begin(), batches_.back().end(), [&](size_t position) {
                return links[mac].count(devices_[position].mac) != 0;
            });
        if (begins || linked || is_full())
            batches_.emplace_back();
        begins = false;
        batches_.back().push_back(found->second);
    }
}

} // namespace

std::vector<std::vector<size_t>> make_batches(const std::vector<BatchDevice> &devices,
                                              const BatchPlan &plan)
{
    Batcher batcher(devices, plan);
    if (plan.keep_order) {
        batcher.add_in_order();
        return batcher.take();
    }
    Positions access_points, others, switches;
    for (size_t i = 0; i < devices.size(); i++)
        (devices[i].kind == DEVICE_ACCESS_POINT ? access_points
         : devices[i].kind == DEVICE_SWITCH     ? switches
                                                : others)
            .push_back(i);
    batcher.add_spread(std::move(access_points));
    batcher.add_spread(std::move(others));
    batcher.add_switches(switches);
    return batcher.take();
}
