// SPDX-License-Identifier: MIT
// The wire order of a device's stored configuration, written down once. See wire.h for what
// a visitor is. A field's name is the setting's name in configuration files, within its table.
#pragma once

#include "device/wire.h"
#include "device/wtp_record.h"

template <ConfigVisitor Wire> void visit_fields(Wire &wire, Mac &mac)
{
    wire("", mac);
}

template <ConfigVisitor Wire> void visit_fields(Wire &wire, HostSlot &host)
{
    wire("", host);
}

template <ConfigVisitor Wire> void visit_band_steering(Wire &wire, BandSteeringCfg &bandsteering)
{
    wire("bandsteering.mode", bandsteering.mode);
    wire("bandsteering.percent_en", bandsteering.percent_en);
    wire("bandsteering.rssi_en", bandsteering.rssi_en);
    wire("bandsteering.rssi", bandsteering.rssi);
    wire("bandsteering.percent", bandsteering.percent);
}

template <ConfigVisitor Wire> void visit_fast_handover(Wire &wire, FastHandoverCfg &fasthandover)
{
    wire("fasthandover.status", fasthandover.status);
    wire("fasthandover.rssi", fasthandover.rssi);
}

template <ConfigVisitor Wire> void visit_portal(Wire &wire, PortalCfg &portal)
{
    wire("portal.enable", portal.enable);
    wire("portal.login_type", portal.login_type);
    wire("portal.radius_server", portal.radius_server);
    wire("portal.userurl", portal.userurl);
    wire("portal.walled_garden.enable", portal.walled_garden.enable);
    wire("portal.walled_garden.pages", portal.walled_garden.pages);
    wire("portal.radius_port", portal.radius_port);
    wire("portal.radius_secret", portal.radius_secret);
    wire("portal.session_timeout", portal.session_timeout);
    wire("portal.session_timeout_enable", portal.session_timeout_enable);
    wire("portal.idle_timeout", portal.idle_timeout);
    wire("portal.idle_timeout_enable", portal.idle_timeout_enable);
    wire("portal.accounting_enable", portal.accounting_enable);
    wire("portal.accounting_time", portal.accounting_time);
    wire("portal.auth_type", portal.auth_type);
    wire("portal.external_server", portal.external_server);
    wire("portal.external_secret", portal.external_secret);
    wire("portal.account_server", portal.account_server);
    wire("portal.accounting_port", portal.accounting_port);
    wire("portal.accounting_secret", portal.accounting_secret);
    wire("portal.uamformat", portal.uamformat);
    wire("portal.local_auth", portal.local_auth);
    wire("portal.port", portal.port);
    wire("portal.https_enable", portal.https_enable);
    wire("portal.radius_secret2", portal.radius_secret2);
    wire("portal.radius_server2", portal.radius_server2);
}

template <ConfigVisitor Wire> void visit_fields(Wire &wire, WlanCfg &wlan)
{
    wire("enable", wlan.enable);
    wire("ssid", wlan.ssid);
    wire("supr_ssid", wlan.supr_ssid);
    wire("sta_sep", wlan.sta_sep);
    wire("isolation", wlan.isolation);
    wire("layer2Isolation", wlan.layer2Isolation);
    wire.rows("l2macWlist", wlan.l2macWlist, COUNT_U32);
    wire("vlan", wlan.vlan);
    wire("downloadlimit", wlan.downloadlimit);
    wire("uploadlimit", wlan.uploadlimit);
    wire("downperuser_en", wlan.downperuser_en);
    wire("uploadperuser_en", wlan.uploadperuser_en);
    wire("downloadMode", wlan.downloadMode);
    wire("uploadMode", wlan.uploadMode);
    wire("roaming.enable", wlan.roaming.enable);
    wire("roaming.adv_search", wlan.roaming.adv_search);
    wire("acl.mode", wlan.acl.mode);
    wire.rows("acl.mac", wlan.acl.mac, COUNT_U32);
    wire("sec_mode", wlan.sec_mode);
    wire("wep.auth_type", wlan.wep.auth_type);
    wire("wep.in_type", wlan.wep.in_type);
    wire("wep.key_len", wlan.wep.key_len);
    wire("wep.def_key", wlan.wep.def_key);
    for (std::string_view &key : wlan.wep.key)
        wire("wep.key[]", key);
    wire("wpa.enc_mode", wlan.wpa.enc_mode);
    wire("wpa.suiteb_en", wlan.wpa.suiteb_en);
    wire("wpa.passphrase", wlan.wpa.passphrase);
    wire("wpa.group_key_int", wlan.wpa.group_key_int);
    wire("wpa.radius.addr", wlan.wpa.radius.addr);
    wire("wpa.radius.port", wlan.wpa.radius.port);
    wire("wpa.radius.secret", wlan.wpa.radius.secret);
    wire("acc.enable", wlan.acc.enable);
    wire("acc.addr", wlan.acc.addr);
    wire("acc.port", wlan.acc.port);
    wire("acc.secret", wlan.acc.secret);
    wire("acc.interval", wlan.acc.interval);
    wire("nas.id_enable", wlan.nas.id_enable);
    wire("nas.id", wlan.nas.id);
    wire("nas.port_enable", wlan.nas.port_enable);
    wire("nas.port", wlan.nas.port);
    wire("nas.ip_enable", wlan.nas.ip_enable);
    wire("nas.ip", wlan.nas.ip);
    wire("wpa.pmf_enable", wlan.wpa.pmf_enable);
    visit_portal(wire, wlan.portal);
    wire("portal.network_type", wlan.portal.network_type);
    wire("hotspot20", wlan.hotspot20);
    visit_band_steering(wire, wlan.bandsteering);
}

template <ConfigVisitor Wire> void visit_fields(Wire &wire, RadioCfg &radio)
{
    wire("country", radio.country);
    wire("op_mode", radio.op_mode);
    wire("wl_mode", radio.wl_mode);
    wire("channel.ht", radio.channel.ht);
    wire("channel.ext", radio.channel.ext);
    wire("channel.val", radio.channel.val);
    wire("tx_power", radio.tx_power);
    wire("obey_regulatory_power", radio.obey_regulatory_power);
    wire("data_rate", radio.data_rate);
    wire("bit_rate", radio.bit_rate);
    wire("ax_enable", radio.ax_enable);
    wire("rts_cts_threshold", radio.rts_cts_threshold);
    wire("distance", radio.distance);
    wire("aggregation.enable", radio.aggregation.enable);
    wire("aggregation.frames", radio.aggregation.frames);
    wire("aggregation.maxbytes", radio.aggregation.maxbytes);
    wire("limited_clients.enable", radio.limited_clients.enable);
    wire("limited_clients.count", radio.limited_clients.count);
    visit_portal(wire, radio.portal);
    wire("mesh.enable", radio.mesh.enable);
    wire("mesh.id", radio.mesh.id);
    wire("mesh.wpa_key", radio.mesh.wpa_key);
    wire("mesh.link_robust_threshold", radio.mesh.link_robust_threshold);
    visit_fast_handover(wire, radio.fasthandover);
    wire.rows("wlan", radio.wlan, COUNT_U32);
}

template <ConfigVisitor Wire> void visit_fields(Wire &wire, LanPortCfg &lan_port)
{
    wire("en", lan_port.en);
    wire("vid", lan_port.vid);
    wire("vlan_mode", lan_port.vlan_mode);
}

template <ConfigVisitor Wire> void visit_fields(Wire &wire, SwitchPortCfg &port)
{
    wire("mode", port.mode);
    wire("flow_control", port.flow_control);
    wire("port", port.port);
    wire("descp", port.descp);
}

template <ConfigVisitor Wire> void visit_fields(Wire &wire, PoePortCfg &port)
{
    wire("port", port.port);
    wire("enable", port.enable);
    wire("user_power_limit", port.user_power_limit);
    wire("power_limit_type", port.power_limit_type);
    wire("priority", port.priority);
}

template <ConfigVisitor Wire> void visit_fields(Wire &wire, PdLifeguard &rule)
{
    wire("port", rule.port);
    wire("enable", rule.enable);
    wire("mode", rule.mode);
    wire("action", rule.action);
    wire("specified_ip", rule.specified_ip);
    wire("ping_interval", rule.ping_interval);
    wire("ping_max_count", rule.ping_max_count);
    wire("power_recovery_interval", rule.power_recovery_interval);
    wire("reboot_max_retry_count", rule.reboot_max_retry_count);
    wire("reboot_count", rule.reboot_count);
    wire("pd_bootup_time", rule.pd_bootup_time);
    wire("status", rule.status);
}

template <ConfigVisitor Wire> void visit_fields(Wire &wire, PdlStatus &row)
{
    wire("port", row.port);
    wire("state", row.state);
    wire("mode", row.mode);
    wire("polling_method", row.polling_method);
    wire("mac", row.mac);
    wire("management_ip", row.management_ip);
    wire("action", row.action);
}

template <ConfigVisitor Wire> void visit_access_point_cfg(Wire &wire, WtpCfg &cfg)
{
    wire("password", cfg.password_md5);
    wire("bandsteer", cfg.bandsteer);
    visit_band_steering(wire, cfg.bandsteering);
    visit_fast_handover(wire, cfg.fasthandover);
    wire("guest_network.addr", cfg.guest_network.addr);
    wire("guest_network.mask", cfg.guest_network.mask);
    wire("guest_network.start", cfg.guest_network.start);
    wire("guest_network.end", cfg.guest_network.end);
    wire("guest_network.wins", cfg.guest_network.wins);
    wire("led.power", cfg.led.power);
    wire("led.lan", cfg.led.lan);
    wire("led.wlan0", cfg.led.wlan0);
    wire("led.wlan1", cfg.led.wlan1);
    wire("led.wlan2", cfg.led.wlan2);
    wire("led.mesh", cfg.led.mesh);
    wire("manage_vlan_id", cfg.manage_vlan_id);
    wire("log_remote_en", cfg.log_remote_en);
    wire("log_traffic_en", cfg.log_traffic_en);
    wire("log_remote_conf", cfg.log_remote_conf);
    wire.rows("lan_port", cfg.lan_port, COUNT_I32);
    wire("mesh.enable_total", cfg.mesh.enable_total);
    wire.rows("radio", cfg.radio, COUNT_U32);
}

template <ConfigVisitor Wire> void visit_switch_cfg(Wire &wire, WtpCfg &cfg)
{
    wire("sw_extra_text", cfg.sw_extra_text);
    wire.rows("switch_port", cfg.switch_port, COUNT_U32);
    wire("redundancyMode", cfg.redundancyMode);
    wire.rows("manage_mac_list", cfg.manage_mac_list, COUNT_U32);
    wire("power_budget", cfg.power_budget);
    wire.rows("poe_port", cfg.poe_port, COUNT_U32);
    wire("pdl_enable", cfg.pdl_enable);
    wire.rows("pd_lifeguard", cfg.pd_lifeguard, COUNT_U32);
    wire.rows("pdl_status", cfg.pdl_status, COUNT_U32);
}

template <ConfigVisitor Wire> void visit_fields(Wire &wire, WtpCfg &cfg, uint8_t wtp_type)
{
    wire("ip", cfg.ip);
    wire("mask", cfg.mask);
    wire("gateway", cfg.gateway);
    wire("dns1", cfg.dns1);
    wire("dns2", cfg.dns2);
    wire("name", cfg.name);
    wire("location", cfg.location);
    wire("admin", cfg.admin);
    wire("timezone", cfg.timezone);
    wire.rows("ac_list", cfg.ac_list, COUNT_U32);
    if (wtp_type == DEVICE_ACCESS_POINT)
        visit_access_point_cfg(wire, cfg);
    else if (wtp_type == DEVICE_SWITCH)
        visit_switch_cfg(wire, cfg);
}
