// SPDX-License-Identifier: MIT
#include "sim/topology.h"

#include "sim/defaults.h"

namespace {

constexpr uint32_t ACCESS_PORTS = SWITCH_PORTS - 2; // the last two lead to other switches
constexpr uint32_t PORT_DOWN = SWITCH_PORTS - 1, PORT_UP = SWITCH_PORTS; // of the building

struct Neighbour {
    uint32_t port = 0; // of the switch
    const WtpRecord *wtp = nullptr;
    std::string remote_port;
};

// The device of a place in the fleet, if it is there and online.
const WtpRecord *online(const Fleet &fleet, uint32_t first, uint32_t count, uint32_t number)
{
    if (number >= count)
        return nullptr;
    const WtpRecord &wtp = fleet[first + number]->record;
    return wtp.state == WTP_ONLINE ? &wtp : nullptr;
}

std::vector<Neighbour> neighbours_of(const Fleet &fleet, const FleetSize &size, uint32_t number)
{
    std::vector<Neighbour> found;
    const auto add = [&](uint32_t port, const WtpRecord *wtp, const std::string &remote_port) {
        if (wtp != nullptr)
            found.push_back({port, wtp, remote_port});
    };
    for (uint32_t i = 0; i < ACCESS_PORTS; i++)
        add(i + 1, online(fleet, 0, size.aps, number * ACCESS_PORTS + i), "eth0");
    if (number > 0)
        add(PORT_DOWN, online(fleet, size.aps, size.switches, number - 1), std::to_string(PORT_UP));
    add(PORT_UP, online(fleet, size.aps, size.switches, number + 1), std::to_string(PORT_DOWN));
    return found;
}

void set_link(SwitchPortInfo &port, bool up)
{
    port.link_status = up;
    port.speed = up ? 1000 : 0;
}

// The ports to other switches have a link if there is one, and give no power; an access point has
// both.
void set_ports(WtpRecord &wtp, const std::vector<Neighbour> &neighbours)
{
    for (uint32_t i = ACCESS_PORTS; i < wtp.switch_port.size(); i++) {
        set_link(wtp.switch_port[i], false);
        give_power(wtp, wtp.poe_port[i], 0);
    }
    for (const Neighbour &neighbour : neighbours) {
        const uint32_t i = neighbour.port - 1;
        set_link(wtp.switch_port[i], true);
        if (i < ACCESS_PORTS && wtp.poe_port[i].output_power == 0)
            give_power(wtp, wtp.poe_port[i], 6 + i % 4);
    }
}

void tell_neighbours(Arena &memory, WtpRecord &wtp, const std::vector<Neighbour> &neighbours,
                     time_t now)
{
    memory.allocate(wtp.lldp_dev_list, neighbours.size());
    memory.allocate(wtp.dev_list, neighbours.size());
    for (const Neighbour &neighbour : neighbours) {
        LldpDevice &seen = wtp.lldp_dev_list.append();
        seen.localPort = neighbour.port;
        seen.mac = neighbour.wtp->mac;
        seen.remotePort = memory.copy(neighbour.remote_port);
        seen.name = memory.copy(neighbour.wtp->name);
        seen.model = memory.copy(neighbour.wtp->model);

        TopoDev &device = wtp.dev_list.append();
        device.type = neighbour.wtp->wtp_type;
        device.mac = seen.mac;
        device.ip = neighbour.wtp->ip;
        device.name = seen.name;
        device.model = memory.copy(device.type == DEVICE_SWITCH ? "Switch,\r\n10 ports"
                                                                : "Access point,\r\nindoor");
        device.update_time = device.system_time = static_cast<uint32_t>(now);
        memory.allocate(device.link, 1);
        TopoLink &link = device.link.append();
        link.local_port = neighbour.port;
        link.mac = wtp.mac;
        link.remote_port = seen.remotePort;
    }
}

} // namespace

void cable(Fleet &fleet, const FleetSize &size, time_t now)
{
    for (uint32_t number = 0; number < size.switches; number++) {
        Device &device = *fleet[size.aps + number];
        if (device.record.state != WTP_ONLINE)
            continue;
        const std::vector<Neighbour> neighbours = neighbours_of(fleet, size, number);
        set_ports(device.record, neighbours);
        tell_neighbours(device.memory, device.record, neighbours, now);
    }
}
