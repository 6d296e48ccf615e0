// SPDX-License-Identifier: MIT
#include "common/topology.h"

#include "common/address_text.h"
#include "common/device_names.h"

#include <algorithm>

// What the controller itself says of a device goes before what its neighbours say.
void Topology::add_neighbour(const Mac &mac, std::string_view name, std::string_view model,
                             uint8_t type)
{
    TopologyNode &node = nodes_[mac];
    if (node.listed)
        return;
    if (node.name.empty())
        node.name = name;
    if (node.model.empty())
        node.model = model;
    if (node.type == 0)
        node.type = type;
}

void Topology::add(const WtpRecord &wtp)
{
    nodes_[wtp.mac] = {std::string(wtp.name), std::string(wtp.model), ipv4_name(wtp.ip),
                       state_name(wtp),       wtp.wtp_type,           true};
    for (const LldpDevice &neighbour : wtp.lldp_dev_list) {
        add_neighbour(neighbour.mac, neighbour.name, neighbour.model, 0);
        if (neighbour.mac != wtp.mac)
            seen_[{wtp.mac, neighbour.mac}].push_back({wtp.mac, neighbour.mac,
                                                       std::to_string(neighbour.localPort),
                                                       std::string(neighbour.remotePort)});
    }
    for (const TopoDev &device : wtp.dev_list) {
        add_neighbour(device.mac, device.name, device.model, static_cast<uint8_t>(device.type));
        TopologyNode &node = nodes_[device.mac];
        if (!node.listed && !device.ip.is_zero())
            node.address = ipv4_name(device.ip);
        // LLDP tells more exactly of the switch's own neighbours.
        if (device.mac == wtp.mac || seen_.count({wtp.mac, device.mac}) != 0)
            continue;
        for (const TopoLink &link : device.link)
            if (link.mac == wtp.mac)
                seen_[{wtp.mac, device.mac}].push_back({wtp.mac, device.mac,
                                                        std::to_string(link.local_port),
                                                        std::string(link.remote_port)});
            else if (link.mac != device.mac && link.mac != Mac())
                seen_[{device.mac, link.mac}].push_back({device.mac, link.mac,
                                                         std::to_string(link.local_port),
                                                         std::string(link.remote_port)});
    }
}

// Where both ends tell of their links, the one that tells of more is believed; of a single link
// each end knows its own port best.
std::vector<TopologyLink> Topology::links() const
{
    std::vector<TopologyLink> all;
    for (const auto &[pair, links] : seen_) {
        const auto &[from, to] = pair;
        const auto back = seen_.find({to, from});
        const size_t told_back = back == seen_.end() ? 0 : back->second.size();
        if (told_back > links.size() || (told_back == links.size() && to < from))
            continue;
        std::set<TopologyLink> different(links.begin(), links.end());
        for (TopologyLink link : different) {
            if (told_back == 1 && links.size() == 1)
                link.to_port = back->second[0].from_port;
            all.push_back(std::move(link));
        }
    }
    return all;
}
