// SPDX-License-Identifier: MIT
// The members of a stored configuration in JSON, see json_members.h.
#pragma once

#include "device/wtp_record.h"
#include "report/format.h"

#include <cstring>

namespace json_members {

template <class Json, size_t N>
void print_macs(Json &json, const char (&name)[N], const ArrayView<Mac> &macs)
{
    json.array(name);
    for (const Mac &mac : macs)
        json.element(mac);
    json.end_array();
}

template <class Json> void print_band_steering(Json &json, const BandSteeringCfg &bandsteering)
{
    json.object("bandsteering");
    json.member("mode", bandsteering.mode);
    json.member("percent_en", bandsteering.percent_en);
    json.member("rssi_en", bandsteering.rssi_en);
    json.member("rssi", bandsteering.rssi);
    json.member("percent", bandsteering.percent);
    json.end_object();
}

template <class Json> void print_fast_handover(Json &json, const FastHandoverCfg &fasthandover)
{
    json.object("fasthandover");
    json.member("status", fasthandover.status);
    json.member("rssi", fasthandover.rssi);
    json.end_object();
}

enum class PortalOf { radio, wlan };

template <class Json> void print_portal(Json &json, const PortalCfg &portal, PortalOf owner)
{
    json.object("portal");
    json.member("enable", portal.enable);
    json.member("login_type", portal.login_type);
    json.member("radius_server", portal.radius_server);
    json.escaped("userurl", portal.userurl);
    json.object("walled_garden");
    json.member("enable", portal.walled_garden.enable);
    json.escaped("pages", portal.walled_garden.pages);
    json.end_object();
    json.member("radius_port", portal.radius_port);
    json.escaped("radius_secret", portal.radius_secret);
    json.member("session_timeout", portal.session_timeout);
    json.member("session_timeout_enable", portal.session_timeout_enable);
    json.member("idle_timeout", portal.idle_timeout);
    json.member("idle_timeout_enable", portal.idle_timeout_enable);
    json.member("accounting_enable", portal.accounting_enable);
    json.member("accounting_time", portal.accounting_time);
    json.member("auth_type", portal.auth_type);
    json.escaped("external_server", portal.external_server);
    json.escaped("external_secret", portal.external_secret);
    json.member("account_server", portal.account_server);
    json.member("accounting_port", portal.accounting_port);
    json.escaped("accounting_secret", portal.accounting_secret);
    json.escaped("uamformat", portal.uamformat);
    json.escaped("local_auth", portal.local_auth);
    json.member("port", portal.port);
    json.member("https_enable", portal.https_enable);
    if (owner == PortalOf::wlan)
        json.member("network_type", portal.network_type);
    json.escaped("radius_secret2", portal.radius_secret2);
    json.member("radius_server2", portal.radius_server2);
    json.end_object();
}

template <class Json> void print_wep(Json &json, const WlanCfg &wlan)
{
    json.object("wep");
    json.member("auth_type", wlan.wep.auth_type);
    json.member("in_type", wlan.wep.in_type);
    json.member("key_len", wlan.wep.key_len);
    json.member("def_key", wlan.wep.def_key);
    json.array("key");
    for (const std::string_view key : wlan.wep.key)
        json.escaped_element(key);
    json.end_array();
    json.end_object();
}

template <class Json> void print_wpa(Json &json, const WlanCfg &wlan, bool radius)
{
    json.object("wpa");
    json.member("enc_mode", wlan.wpa.enc_mode);
    json.member("suiteb_en", wlan.wpa.suiteb_en);
    json.member("pmf_enable", wlan.wpa.pmf_enable);
    json.escaped("passphrase", wlan.wpa.passphrase);
    json.member("group_key_int", wlan.wpa.group_key_int);
    if (radius) {
        json.object("radius");
        json.member("addr", wlan.wpa.radius.addr);
        json.member("port", wlan.wpa.radius.port);
        json.escaped("secret", wlan.wpa.radius.secret);
        json.end_object();
    }
    json.end_object();
}

// The security mode decides which group is shown.
template <class Json> void print_security(Json &json, const WlanCfg &wlan)
{
    if (wlan.sec_mode == SECURITY_WEP)
        print_wep(json, wlan);
    else if (uses_wpa(wlan.sec_mode))
        print_wpa(json, wlan, uses_radius(wlan.sec_mode));
}

template <class Json> void print_wlan_cfg(Json &json, const WlanCfg &wlan)
{
    json.object();
    json.member("enable", wlan.enable);
    json.escaped("ssid", wlan.ssid);
    json.member("supr_ssid", wlan.supr_ssid);
    json.member("sta_sep", wlan.sta_sep);
    json.member("layer2Isolation", wlan.layer2Isolation);
    print_macs(json, "l2macWlist", wlan.l2macWlist);
    json.member("isolation", wlan.isolation);
    json.member("vlan", wlan.vlan);
    json.member("downloadlimit", wlan.downloadlimit);
    json.member("uploadlimit", wlan.uploadlimit);
    json.member("downperuser_en", wlan.downperuser_en);
    json.member("uploadperuser_en", wlan.uploadperuser_en);
    json.member("downloadMode", wlan.downloadMode);
    json.member("uploadMode", wlan.uploadMode);
    json.object("roaming");
    json.member("enable", wlan.roaming.enable);
    json.member("adv_search", wlan.roaming.adv_search);
    json.end_object();
    json.object("acl");
    json.member("mode", wlan.acl.mode);
    print_macs(json, "mac", wlan.acl.mac);
    json.end_object();
    json.member("sec_mode", wlan.sec_mode);
    json.object("nas");
    json.member("id_enable", wlan.nas.id_enable);
    json.escaped("id", wlan.nas.id);
    json.member("ip_enable", wlan.nas.ip_enable);
    json.member("ip", wlan.nas.ip);
    json.member("port_enable", wlan.nas.port_enable);
    json.member("port", wlan.nas.port);
    json.end_object();
    json.object("acc");
    json.member("enable", wlan.acc.enable);
    json.member("addr", wlan.acc.addr);
    json.member("port", wlan.acc.port);
    json.escaped("secret", wlan.acc.secret);
    json.member("interval", wlan.acc.interval);
    json.end_object();
    print_portal(json, wlan.portal, PortalOf::wlan);
    json.raw("hotspot20", wlan.hotspot20.empty() ? "null" : wlan.hotspot20);
    print_band_steering(json, wlan.bandsteering);
    print_security(json, wlan);
    json.end_object();
}

template <class Json> void print_radio_cfg(Json &json, const RadioCfg &radio)
{
    json.object();
    json.member("op_mode", radio.op_mode);
    json.member("wl_mode", radio.wl_mode);
    json.member("country", radio.country);
    json.object("channel");
    json.member("ht", radio.channel.ht);
    json.member("ext", radio.channel.ext);
    json.member("val", radio.channel.val);
    json.end_object();
    json.member("tx_power", radio.tx_power);
    json.member("obey_regulatory_power", radio.obey_regulatory_power);
    json.member("data_rate", data_rate_text(radio.data_rate));
    json.member("bit_rate", radio.bit_rate);
    json.member("ax_enable", radio.ax_enable);
    json.member("rts_cts_threshold", radio.rts_cts_threshold);
    json.member("distance", radio.distance);
    json.object("aggregation");
    json.member("enable", radio.aggregation.enable);
    json.member("frames", radio.aggregation.frames);
    json.member("maxbytes", radio.aggregation.maxbytes);
    json.end_object();
    json.object("limited_clients");
    json.member("enable", radio.limited_clients.enable);
    json.member("count", radio.limited_clients.count);
    json.end_object();
    print_portal(json, radio.portal, PortalOf::radio);
    json.object("mesh");
    json.member("enable", radio.mesh.enable);
    json.escaped("id", radio.mesh.id);
    json.escaped("wpa_key", radio.mesh.wpa_key);
    json.member("link_robust_threshold", int32_t{radio.mesh.link_robust_threshold});
    json.end_object();
    print_fast_handover(json, radio.fasthandover);
    json.array("wlan");
    for (const WlanCfg &wlan : radio.wlan)
        print_wlan_cfg(json, wlan);
    json.end_array();
    json.end_object();
}

template <class Json> void print_lan_ports(Json &json, const WtpCfg &cfg)
{
    json.array("lan_port");
    uint32_t position = 0;
    for (const LanPortCfg &lan_port : cfg.lan_port) {
        json.object();
        json.member("po", position++);
        json.member("en", lan_port.en);
        json.member("vlan_mode", lan_port.vlan_mode);
        json.member("vid", lan_port.vid);
        json.end_object();
    }
    json.end_array();
}

template <class Json> void print_access_point_cfg(Json &json, const WtpCfg &cfg, bool password)
{
    if (password)
        json.member("password_md5", cfg.password_md5);
    json.member("bandsteer", cfg.bandsteer);
    print_band_steering(json, cfg.bandsteering);
    json.member("manage_vlan_id", cfg.manage_vlan_id);
    json.member("log_remote_en", cfg.log_remote_en);
    json.member("log_traffic_en", cfg.log_traffic_en);
    json.member("log_remote_conf", cfg.log_remote_conf);
    if (!cfg.lan_port.empty())
        print_lan_ports(json, cfg);
    print_fast_handover(json, cfg.fasthandover);
    json.object("guest_network");
    json.member("addr", cfg.guest_network.addr);
    json.member("mask", cfg.guest_network.mask);
    json.member("start", cfg.guest_network.start);
    json.member("end", cfg.guest_network.end);
    json.member("wins", cfg.guest_network.wins);
    json.end_object();
    json.object("led");
    json.member("power", cfg.led.power);
    json.member("lan", cfg.led.lan);
    json.member("wlan0", cfg.led.wlan0);
    json.member("wlan1", cfg.led.wlan1);
    json.member("wlan2", cfg.led.wlan2);
    json.member("mesh", cfg.led.mesh);
    json.end_object();
    json.object("mesh");
    json.member("enable_total", cfg.mesh.enable_total);
    json.end_object();
    json.array("radio");
    for (const RadioCfg &radio : cfg.radio)
        print_radio_cfg(json, radio);
    json.end_array();
}

template <class Json> void print_pd_lifeguard(Json &json, const WtpCfg &cfg)
{
    json.array("pd_lifeguard");
    for (const PdLifeguard &rule : cfg.pd_lifeguard) {
        json.object();
        json.member("port", rule.port);
        json.member("enable", rule.enable);
        json.member("mode", rule.mode);
        json.member("action", rule.action);
        json.member("specified_ip", rule.specified_ip);
        json.member("ping_interval", rule.ping_interval);
        json.member("ping_max_count", rule.ping_max_count);
        json.member("power_recovery_interval", rule.power_recovery_interval);
        json.member("reboot_max_retry_count", rule.reboot_max_retry_count);
        json.member("reboot_count", rule.reboot_count);
        json.member("pd_bootup_time", rule.pd_bootup_time);
        json.member("status", rule.status);
        json.end_object();
    }
    json.end_array();
    json.array("pdl_status");
    for (const PdlStatus &row : cfg.pdl_status) {
        json.object();
        json.member("port", row.port);
        json.member("state", row.state);
        json.member("mode", row.mode);
        json.member("polling_method", row.polling_method);
        json.member("mac", row.mac);
        json.member("management_ip", row.management_ip);
        json.member("action", row.action);
        json.end_object();
    }
    json.end_array();
}

template <class Json> void print_switch_cfg(Json &json, const WtpCfg &cfg)
{
    json.member("redundancyMode", cfg.redundancyMode);
    print_macs(json, "manage_mac_list", cfg.manage_mac_list);
    json.array("switch_port");
    for (const SwitchPortCfg &port : cfg.switch_port) {
        json.object();
        json.member("port", port.port);
        json.member("mode", port.mode);
        json.member("flow_control", port.flow_control);
        json.member("descp", port.descp);
        json.end_object();
    }
    json.end_array();
    json.member("power_budget", cfg.power_budget);
    json.array("poe_port");
    for (const PoePortCfg &port : cfg.poe_port) {
        json.object();
        json.member("port", port.port);
        json.member("enable", port.enable);
        json.member("power_limit_type", port.power_limit_type);
        json.member("user_power_limit", port.user_power_limit);
        json.member("priority", port.priority);
        json.end_object();
    }
    json.end_array();
    json.member("pdl_enable", cfg.pdl_enable);
    print_pd_lifeguard(json, cfg);
}

// The three addresses as one string, joined by slashes.
template <class Json> void print_ipv4(Json &json, const WtpCfg &cfg)
{
    char text[3 * IPV4_TEXT_MAX + 3];
    char *to = write_ipv4(text, cfg.ip);
    *to++ = '/';
    to = write_ipv4(to, cfg.mask);
    *to++ = '/';
    to = write_ipv4(to, cfg.gateway);
    json.member("ipv4", std::string_view(text, static_cast<size_t>(to - text)));
}

// The members of the configuration object of a record that has a configuration.
template <class Json> void print_cfg_json(Json &json, const WtpRecord &wtp, bool password)
{
    const WtpCfg &cfg = *wtp.wtp_cfg;
    json.member("name", cfg.name);
    json.member("location", cfg.location);
    json.member("admin", cfg.admin);
    json.member("timezone", cfg.timezone);
    print_ipv4(json, cfg);
    json.member("dns1", cfg.dns1);
    json.member("dns2", cfg.dns2);
    json.array("ac_list");
    for (const HostSlot &host : cfg.ac_list)
        json.element({host.text, strnlen(host.text, sizeof host.text)});
    json.end_array();
    if (wtp.wtp_type == DEVICE_ACCESS_POINT)
        print_access_point_cfg(json, cfg, password);
    else if (wtp.wtp_type == DEVICE_SWITCH)
        print_switch_cfg(json, cfg);
}

} // namespace json_members
