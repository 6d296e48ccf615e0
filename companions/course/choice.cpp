// SPDX-License-Identifier: MIT
#include "course/choice.h"

void check_choice(const SelectionCheck &check)
{
    for (const std::string &name : check.unmatched_names())
        throw Failure("no device has a name that matches '" + name + "'");
    for (const std::string &what : check.idle_exclusions())
        throw Failure("--exclude " + what + " excludes no device");
}

SwitchLinks links_of(const Topology &topology, const std::vector<Mac> &switches)
{
    SwitchLinks links;
    for (const Mac &mac : switches)
        links[mac];
    for (const TopologyLink &link : topology.links()) {
        if (const auto found = links.find(link.from); found != links.end())
            found->second.insert(link.to);
        if (const auto found = links.find(link.to); found != links.end())
            found->second.insert(link.from);
    }
    return links;
}
