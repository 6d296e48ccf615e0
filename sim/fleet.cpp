// SPDX-License-Identifier: MIT
#include "sim/fleet.h"

#include "sim/defaults.h"
#include "sim/topology.h"

#include <random>

namespace {

// Numbers that are the same everywhere for the same seed.
class Random {
public:
    explicit Random(uint32_t seed) : engine_(seed) {}
    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(engine_() % limit); }
    uint32_t between(uint32_t low, uint32_t high) { return low + below(high - low + 1); }
    bool chance(uint32_t percent) { return below(100) < percent; }
    template <class Item, size_t N> const Item &pick(const Item (&items)[N])
    {
        return items[below(N)];
    }

private:
    std::mt19937 engine_;
};

Ipv4 make_ipv4(uint8_t net, uint32_t number)
{
    return {{10, net, static_cast<uint8_t>(number / 250), static_cast<uint8_t>(number % 250 + 1)}};
}

Ipv4 gateway_of(Ipv4 addr)
{
    return {{addr.octet[0], addr.octet[1], 255, 254}};
}

constexpr Ipv4 NET_MASK = {{255, 255, 0, 0}};
constexpr Ipv4 NAME_SERVER = {{10, 0, 0, 53}};

void fill_caps(CfgCap &cap, uint8_t start)
{
    for (uint8_t &flag : cap.flag)
        flag = static_cast<uint8_t>(start++ % 4 == 0 ? 0 : 1);
}

void set_identity(Arena &memory, WtpRecord &wtp, Random &random, uint8_t type, uint32_t number,
                  time_t now)
{
    static constexpr const char *FIRMWARES[] = {FIRMWARE_LATEST, FIRMWARE_BETWEEN, FIRMWARE_BETWEEN,
                                                FIRMWARE_LEGACY};
    const bool online = number == 0 || random.chance(85);
    wtp.wtp_type = type;
    wtp.mac = make_mac(static_cast<uint8_t>(0xA0 + type), number + 1);
    wtp.ip = make_ipv4(type, number);
    wtp.port = 5246;
    set_text(memory, wtp.sn, "SN%u%06u", static_cast<unsigned>(type), number + 1);
    wtp.managed = number % 4 != 3;
    wtp.state = online ? WTP_ONLINE : WTP_OFFLINE;
    wtp.sw_ver = memory.copy(random.pick(FIRMWARES));
    wtp.cw_ver = memory.copy("1.0");
    wtp.join_time = static_cast<uint32_t>(now - random.between(3600, 30 * 86400));
    wtp.last_time = static_cast<uint32_t>(online ? now : now - 7200);
    wtp.change_time = wtp.join_time;
    wtp.cur_cfg = {wtp.ip, NET_MASK, gateway_of(wtp.ip), NAME_SERVER, {}};
    wtp.mem.total = 262144;
    wtp.mem.used = random.between(60000, 200000);
    fill_caps(wtp.cfg_cap, type);
}

void add_stations(Arena &memory, WlanInfo &wlan, Random &random, uint32_t &next_station)
{
    static constexpr const char *OWNERS[] = {"anna", "ben", "carla", "dmitri", "eve", "farid"};
    static constexpr const char *SYSTEMS[] = {"Linux", "Android", "printer firmware", "unknown"};
    const uint32_t count = random.below(4);
    memory.allocate(wlan.sta, count);
    for (uint32_t i = 0; i < count; i++) {
        StationInfo &sta = wlan.sta.append();
        sta.mac = make_mac(0x57, next_station);
        sta.tx = random.below(900000);
        sta.rx = random.below(300000);
        sta.rssi = -static_cast<int32_t>(random.between(40, 85));
        sta.os = memory.copy(random.pick(SYSTEMS));
        set_text(memory, sta.hostname, "%s-%u", random.pick(OWNERS), next_station);
        sta.ip = make_ipv4(100, next_station);
        next_station++;
    }
}

void serve_wlans(Arena &memory, WtpRecord &wtp, Random &random, uint32_t number, uint32_t radios)
{
    uint32_t next_station = number * 64 + 1;
    memory.allocate(wtp.radio, radios);
    for (uint32_t r = 0; r < radios; r++) {
        RadioInfo &radio = wtp.radio.append();
        radio.mac = make_mac(static_cast<uint8_t>(0xB0 + r), number + 1);
        radio.type = r;
        radio.max_tx_power = 23;
        fill_caps(radio.cfg_cap, static_cast<uint8_t>(r));
        radio.cur_cfg.channel = static_cast<int32_t>(wtp.wtp_cfg->radio[r].channel.val);
        radio.cur_cfg.tx_power = 20;
        radio.cur_cfg.tx_power_percent = 87;
        const uint32_t wlans = wtp.wtp_cfg->radio[r].wlan.size();
        memory.allocate(radio.wlan, wlans);
        for (uint32_t w = 0; w < wlans; w++) {
            WlanInfo &wlan = radio.wlan.append();
            wlan.bssid = make_mac(static_cast<uint8_t>(0xC0 + 8 * r + w), number + 1);
            fill_caps(wlan.cfg_cap, static_cast<uint8_t>(w));
            wlan.tx_pkt = random.below(1000000);
            wlan.tx_bytes = random.below(2000000000);
            wlan.rx_pkt = random.below(1000000);
            wlan.rx_bytes = random.below(2000000000);
            add_stations(memory, wlan, random, next_station);
        }
    }
}

std::unique_ptr<Device> make_access_point(Random &random, uint32_t number, time_t now)
{
    auto device = std::make_unique<Device>();
    WtpRecord &wtp = device->record;
    Arena &memory = device->memory;
    const Model &model = AP_MODELS[number % std::size(AP_MODELS)];
    set_identity(memory, wtp, random, DEVICE_ACCESS_POINT, number, now);
    wtp.model = memory.copy(model.name);
    wtp.sku = memory.copy(model.sku);
    wtp.cap_code = 0x1F;
    set_text(memory, wtp.name, "ap-floor%u-%02u", number / 8 + 1, number % 8 + 1);
    reset_configuration(*device);
    set_text(*device->cfg_memory, wtp.wtp_cfg->location, "Floor %u", number / 8 + 1);
    if (wtp.state == WTP_ONLINE)
        serve_wlans(memory, wtp, random, number, model.radios);
    return device;
}

void add_ports(Arena &memory, WtpRecord &wtp, Random &random, uint32_t ports)
{
    memory.allocate(wtp.switch_hw_port, ports);
    memory.allocate(wtp.switch_port, ports);
    memory.allocate(wtp.poe_port, ports);
    wtp.poe_global.power_budget = 370;
    for (uint32_t number = 1; number <= ports; number++) {
        SwitchHwPort &hardware = wtp.switch_hw_port.append();
        hardware.port = number;
        hardware.port_type = number > ports - 2 ? 2 : 1;
        SwitchPortInfo &port = wtp.switch_port.append();
        const bool up = random.chance(70);
        port = {number, 1, up ? 1000U : 0U, up, 0, 1, 1};
        PoePortInfo &poe = wtp.poe_port.append();
        poe.port = number;
        poe.enable = 1;
        poe.priority = number % 3;
        poe.power_limit_type = 1;
        poe.user_power_limit = 30;
        give_power(wtp, poe, up ? random.between(4, 18) : 0);
        poe.temperature = random.between(35, 50);
    }
    memory.allocate(wtp.trunk_port, 1);
    TrunkPortInfo &trunk = wtp.trunk_port.append();
    trunk.id = 1;
    trunk.mode = 1;
    set_text(memory, trunk.active_port, "%u", ports);
    set_text(memory, trunk.port, "%u", ports);
}

std::unique_ptr<Device> make_switch(Random &random, uint32_t number, time_t now)
{
    auto device = std::make_unique<Device>();
    WtpRecord &wtp = device->record;
    Arena &memory = device->memory;
    set_identity(memory, wtp, random, DEVICE_SWITCH, number, now);
    wtp.model = memory.copy("SW-10P");
    set_text(memory, wtp.name, "sw-floor%u", number + 1);
    wtp.sw_max_trunk = 8;
    wtp.sw_max_vlan_num = 256;
    wtp.sw_max_managed_ap = 24;
    wtp.sw_max_mirror_num = 1;
    wtp.sw_max_multicast_num = 512;
    wtp.sw_max_power_budget = 370;
    wtp.sw_min_power_budget = 30;
    wtp.sw_max_static_mac_num = 128;
    wtp.sw_max_trunk_member = 8;
    wtp.sw_dev_suport_type = 3;
    reset_configuration(*device);
    if (wtp.state == WTP_ONLINE)
        add_ports(memory, wtp, random, SWITCH_PORTS);
    return device;
}

std::unique_ptr<Device> make_other(Random &random, uint32_t number, time_t now)
{
    enum : uint8_t { TYPE_BRIDGE = 1 };
    auto device = std::make_unique<Device>();
    Arena &memory = device->memory;
    set_identity(memory, device->record, random, TYPE_BRIDGE, number, now);
    device->record.model = memory.copy("BR-100");
    set_text(memory, device->record.name, "bridge-%u", number + 1);
    reset_configuration(*device);
    return device;
}

} // namespace

double exact_time()
{
    using namespace std::chrono;
    return duration<double>(system_clock::now().time_since_epoch()).count();
}

double steady_time()
{
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

void set_state(WtpRecord &wtp, WtpState state, time_t now)
{
    if (wtp.state != state)
        wtp.change_time = static_cast<uint32_t>(now);
    wtp.state = state;
}

std::unique_ptr<Device> make_absent_device(const Mac &mac)
{
    auto device = std::make_unique<Device>();
    device->record.wtp_type = DEVICE_ACCESS_POINT;
    device->record.mac = mac;
    reset_configuration(*device);
    return device;
}

Fleet make_fleet(const FleetSize &size, time_t now)
{
    Fleet fleet;
    Random random(size.seed);
    for (uint32_t i = 0; i < size.aps; i++)
        fleet.push_back(make_access_point(random, i, now));
    for (uint32_t i = 0; i < size.switches; i++)
        fleet.push_back(make_switch(random, i, now));
    for (uint32_t i = 0; i < size.others; i++)
        fleet.push_back(make_other(random, i, now));
    cable(fleet, size, now);
    for (const auto &device : fleet)
        device->started = static_cast<double>(now - random.between(600, 20 * 86400));
    return fleet;
}
