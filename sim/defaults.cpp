// SPDX-License-Identifier: MIT
#include "sim/defaults.h"

#include <cstring>

namespace {

struct WlanTemplate {
    const char *ssid;
    uint32_t vlan;
    uint32_t sec_mode;
    const char *secret;
};

constexpr WlanTemplate WLANS[] = {{"office", 10, SECURITY_ENTERPRISE, "radius-secret"},
                                  {"voice", 20, SECURITY_PSK, "call-me-maybe"},
                                  {"guest \"free\"", 30, SECURITY_OPEN, ""},
                                  {"scanners", 40, SECURITY_WEP, "0123456789"}};

void set_wlan(Arena &memory, WlanCfg &wlan, const WlanTemplate &from)
{
    wlan.enable = 1;
    wlan.ssid = memory.copy(from.ssid);
    wlan.vlan = from.vlan;
    wlan.sec_mode = from.sec_mode;
    wlan.downloadlimit = wlan.uploadlimit = -1;
    wlan.roaming.enable = 1;
    wlan.wpa.enc_mode = 2;
    wlan.wpa.group_key_int = 3600;
    wlan.wpa.pmf_enable = 1;
    wlan.bandsteering.rssi = -70;
    wlan.nas.port = 1812;
    wlan.hotspot20 = memory.copy("{\"enable\":0}");
    memory.allocate(wlan.acl.mac, 1);
    wlan.acl.mac.append() = make_mac(0xAC, from.vlan);
    if (from.sec_mode == SECURITY_WEP) {
        wlan.wep.key_len = 10;
        wlan.wep.key[0] = memory.copy(from.secret);
    } else if (from.sec_mode == SECURITY_ENTERPRISE) {
        wlan.wpa.radius.addr = {{10, 0, 0, 18}};
        wlan.wpa.radius.port = 1812;
        wlan.wpa.radius.secret = memory.copy(from.secret);
    } else if (from.sec_mode == SECURITY_PSK) {
        wlan.wpa.passphrase = memory.copy(from.secret);
    } else {
        wlan.portal.enable = 1;
        wlan.portal.userurl = memory.copy("http://guest.example.net/welcome");
        wlan.portal.session_timeout = 3600;
    }
}

void set_radio(Arena &memory, RadioCfg &radio, uint32_t number)
{
    radio.country = 276;
    radio.wl_mode = number == 0 ? 9 : 25;
    radio.channel.ht = number == 0 ? 20 : 80;
    radio.channel.val = number == 0 ? 6 : 36 + 8 * number;
    radio.tx_power = 20;
    radio.obey_regulatory_power = 1;
    radio.data_rate = number == 0 ? 0 : 110;
    radio.bit_rate = 1;
    radio.ax_enable = 1;
    radio.rts_cts_threshold = 2346;
    radio.distance = 300;
    radio.aggregation.enable = 1;
    radio.aggregation.frames = 32;
    radio.aggregation.maxbytes = 50000;
    radio.limited_clients.count = 64;
    radio.mesh.id = memory.copy("campus-mesh");
    radio.mesh.wpa_key = memory.copy("mesh-key-0815");
    radio.mesh.link_robust_threshold = -90;
    radio.fasthandover.rssi = -80;
    memory.allocate(radio.wlan, std::size(WLANS));
    for (const WlanTemplate &from : WLANS)
        set_wlan(memory, radio.wlan.append(), from);
}

void configure_access_point(Arena &memory, WtpCfg &cfg, uint32_t radios)
{
    cfg.bandsteering.rssi = -70;
    cfg.bandsteering.percent = 60;
    cfg.fasthandover.rssi = -75;
    cfg.guest_network.addr = {{192, 168, 30, 1}};
    cfg.guest_network.mask = {{255, 255, 255, 0}};
    cfg.guest_network.start = {{192, 168, 30, 10}};
    cfg.guest_network.end = {{192, 168, 30, 250}};
    cfg.led.power = cfg.led.lan = cfg.led.wlan0 = cfg.led.wlan1 = 1;
    cfg.log_remote_conf = memory.copy("10.0.0.14:514");
    memory.allocate(cfg.lan_port, LAN_PORTS);
    for (uint32_t port = 0; port < LAN_PORTS; port++) {
        LanPortCfg &lan_port = cfg.lan_port.append();
        lan_port.en = 1;
        lan_port.vid = static_cast<int32_t>(10 + port);
    }
    memory.allocate(cfg.radio, radios);
    for (uint32_t radio = 0; radio < radios; radio++)
        set_radio(memory, cfg.radio.append(), radio);
}

void configure_switch(Arena &memory, WtpCfg &cfg, uint32_t ports)
{
    cfg.power_budget = 370;
    cfg.pdl_enable = 1;
    memory.allocate(cfg.switch_port, ports);
    memory.allocate(cfg.poe_port, ports);
    for (uint32_t port = 1; port <= ports; port++) {
        SwitchPortCfg &configured = cfg.switch_port.append();
        configured.port = port;
        set_text(memory, configured.descp, "desk %u", port);
        PoePortCfg &poe = cfg.poe_port.append();
        poe.port = port;
        poe.enable = 1;
        poe.priority = port % 3;
        poe.power_limit_type = 1;
        poe.user_power_limit = 30;
    }
    memory.allocate(cfg.manage_mac_list, 1);
    cfg.manage_mac_list.append() = make_mac(0xAD, 1);
    memory.allocate(cfg.pd_lifeguard, 1);
    PdLifeguard &rule = cfg.pd_lifeguard.append();
    rule.port = 1;
    rule.enable = 1;
    rule.ping_interval = 30;
    rule.ping_max_count = 5;
    rule.power_recovery_interval = 10;
    rule.pd_bootup_time = 90;
    rule.status = memory.copy("watching");
    memory.allocate(cfg.pdl_status, 1);
    PdlStatus &status = cfg.pdl_status.append();
    status.port = 1;
    status.state = 1;
    status.mac = memory.copy("02:AA:00:00:00:01");
    status.action = memory.copy("none");
}

} // namespace

uint32_t radios_of(const WtpRecord &wtp)
{
    for (const Model &model : AP_MODELS)
        if (model.name == wtp.model)
            return model.radios;
    return wtp.wtp_type == DEVICE_ACCESS_POINT ? AP_MODELS[0].radios : 0;
}

Mac make_mac(uint8_t kind, uint32_t number)
{
    return {{0x02, kind, static_cast<uint8_t>(number >> 24), static_cast<uint8_t>(number >> 16),
             static_cast<uint8_t>(number >> 8), static_cast<uint8_t>(number)}};
}

void reset_configuration(Device &device)
{
    const WtpRecord &record = device.record;
    auto memory = std::make_unique<Arena>();
    auto *cfg = memory->make<WtpCfg>();
    if (cfg == nullptr)
        throw std::bad_alloc();
    cfg->name = memory->copy(record.name);
    cfg->admin = memory->copy("admin");
    cfg->timezone = 60;
    memory->allocate(cfg->ac_list, 1);
    strcpy(cfg->ac_list.append().text, "controller.example.net");
    if (record.wtp_type == DEVICE_ACCESS_POINT)
        configure_access_point(*memory, *cfg, radios_of(record));
    else if (record.wtp_type == DEVICE_SWITCH)
        configure_switch(*memory, *cfg, SWITCH_PORTS);
    device.record.wtp_cfg = cfg;
    device.cfg_memory = std::move(memory);
}

void give_power(WtpRecord &wtp, PoePortInfo &poe, uint32_t watts)
{
    constexpr uint32_t CLASS = 3, VOLTS = 53;
    wtp.poe_global.allocated_power += watts - poe.output_power;
    const bool on = watts > 0;
    poe.poe_class = on ? CLASS : 0;
    poe.status = on;
    poe.output_voltage = on ? VOLTS : 0;
    poe.output_current = watts * 1000 / VOLTS;
    poe.output_power = watts;
}
