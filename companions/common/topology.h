// SPDX-License-Identifier: MIT
// Which device is connected to which, as the switches see it.
#pragma once

#include "device/wtp_record.h"

#include <map>
#include <set>
#include <string>
#include <vector>

struct TopologyNode {
    std::string name, model, address, state;
    uint8_t type = 0;    // as wtp_type
    bool listed = false; // false: only a neighbour has told of it
};

// The ports are what each end calls its own; a text that is empty is not known.
struct TopologyLink {
    Mac from, to; // `from` is the one that tells
    std::string from_port, to_port;
    auto operator<=>(const TopologyLink &) const = default;
};

class Topology {
public:
    void add(const WtpRecord &wtp);

    const std::map<Mac, TopologyNode> &nodes() const { return nodes_; }

    // Each cable once, though both its ends may have told of it.
    std::vector<TopologyLink> links() const;

private:
    void add_neighbour(const Mac &mac, std::string_view name, std::string_view model, uint8_t type);

    std::map<Mac, TopologyNode> nodes_;
    std::map<std::pair<Mac, Mac>, std::vector<TopologyLink>> seen_; // by who tells of whom
};
