// SPDX-License-Identifier: MIT
// The members of a device in JSON, in their order, for each writer that has the functions of
// BasicJsonWriter: the report's, one that is always valid, and one that takes down what there is.
#pragma once

#include "report/json_cfg_members.h"

namespace json_members {

template <class Json> void print_common(Json &json, const WtpRecord &wtp)
{
    json.member("wtp_type", wtp.wtp_type);
    json.member("mac", wtp.mac);
    json.member("ip", wtp.ip);
    json.member("port", wtp.port);
    json.member("model", wtp.model);
    json.member("sn", wtp.sn);
    json.member("managed", wtp.managed);
    json.member("unavaiable_fw", wtp.unavaiable_fw);
    json.member("upg_img", wtp.upg_img);
    json.member("new_fw_img", wtp.new_fw_img);
    json.member("new_fw_ver", wtp.new_fw_ver);
    json.member("upg_state", wtp.upg_state);
    json.member("unavaiable_addr", wtp.unavaiable_addr);
    json.member("state", wtp.state);
    json.member("sub_state", wtp.sub_state);
    json.member("progress", wtp.progress);
    json.member("sw_ver", wtp.sw_ver);
    json.member("cw_ver", wtp.cw_ver);
    json.member("name", wtp.name);
    json.member("uptime", wtp.uptime);
    json.member("join_time", wtp.join_time);
    json.member("last_time", wtp.last_time);
    json.member("change_time", wtp.change_time);
    json.object("cur_cfg");
    json.member("ip", wtp.cur_cfg.ip);
    json.member("mask", wtp.cur_cfg.mask);
    json.member("gateway", wtp.cur_cfg.gateway);
    json.member("dns1", wtp.cur_cfg.dns1);
    json.member("dns2", wtp.cur_cfg.dns2);
    json.end_object();
    json.object("mem");
    json.member("total", wtp.mem.total);
    json.member("used", wtp.mem.used);
    json.end_object();
}

template <class Json> void print_wlan(Json &json, const WlanInfo &wlan)
{
    json.object();
    json.member("bssid", wlan.bssid);
    json.member("cfg_cap", wlan.cfg_cap);
    json.member("tx_pkt", wlan.tx_pkt);
    json.member("tx_bytes", wlan.tx_bytes);
    json.member("rx_pkt", wlan.rx_pkt);
    json.member("rx_bytes", wlan.rx_bytes);
    json.array("sta");
    for (const StationInfo &sta : wlan.sta) {
        json.object();
        json.member("mac", sta.mac);
        json.member("tx", sta.tx);
        json.member("rx", sta.rx);
        json.quoted_member("rssi", sta.rssi);
        json.member("os", sta.os);
        json.escaped("hostname", sta.hostname);
        json.member("ip", sta.ip);
        json.end_object();
    }
    json.end_array();
    json.end_object();
}

template <class Json> void print_radio(Json &json, const RadioInfo &radio)
{
    json.object();
    json.member("mac", radio.mac);
    json.member("type", radio.type);
    json.member("max_tx_power", radio.max_tx_power);
    json.member("cfg_cap", radio.cfg_cap);
    json.object("cur_cfg");
    json.member("channel", radio.cur_cfg.channel);
    json.member("tx_power", radio.cur_cfg.tx_power);
    json.member("tx_power_percent", radio.cur_cfg.tx_power_percent);
    json.end_object();
    json.object("mesh");
    json.member("role", radio.mesh.role);
    json.member("bssid", radio.mesh.bssid);
    json.end_object();
    json.array("wlan");
    for (const WlanInfo &wlan : radio.wlan)
        print_wlan(json, wlan);
    json.end_array();
    json.end_object();
}

template <class Json> void print_access_point(Json &json, const WtpRecord &wtp, bool basic)
{
    json.member("cap_code", wtp.cap_code);
    json.member("sku", wtp.sku);
    json.member("cfg_cap", wtp.cfg_cap);
    if (basic)
        return;
    json.array("radio");
    for (const RadioInfo &radio : wtp.radio)
        print_radio(json, radio);
    json.end_array();
}

template <class Json> void print_ports(Json &json, const WtpRecord &wtp)
{
    json.array("switch_hw_port");
    for (const SwitchHwPort &port : wtp.switch_hw_port) {
        json.object();
        json.member("port", port.port);
        json.member("port_type", port.port_type);
        json.end_object();
    }
    json.end_array();
    json.array("switch_port");
    for (const SwitchPortInfo &port : wtp.switch_port) {
        json.object();
        json.member("port", port.port);
        json.member("speed", port.speed);
        json.member("enable", port.enable);
        json.member("link_status", port.link_status);
        json.member("flow_control", port.flow_control);
        json.member("auto_neg", port.auto_neg);
        json.member("duplex", port.duplex);
        json.end_object();
    }
    json.end_array();
    json.array("trunk_port");
    for (const TrunkPortInfo &trunk : wtp.trunk_port) {
        json.object();
        json.member("id", trunk.id);
        json.member("mode", trunk.mode);
        json.member("active_port", trunk.active_port);
        json.member("port", trunk.port);
        json.end_object();
    }
    json.end_array();
}

template <class Json> void print_poe(Json &json, const WtpRecord &wtp)
{
    json.object("poe_global");
    json.member("power_budget", wtp.poe_global.power_budget);
    json.member("allocated_power", wtp.poe_global.allocated_power);
    json.end_object();
    json.array("poe_port");
    for (const PoePortInfo &port : wtp.poe_port) {
        json.object();
        json.member("port", port.port);
        json.member("enable", port.enable);
        json.member("poe_class", port.poe_class);
        json.member("priority", port.priority);
        json.member("power_limit_type", port.power_limit_type);
        json.member("user_power_limit", port.user_power_limit);
        json.member("status", port.status);
        json.member("output_voltage", port.output_voltage);
        json.member("output_current", port.output_current);
        json.member("output_power", port.output_power);
        json.member("temperature", port.temperature);
        json.end_object();
    }
    json.end_array();
}

template <class Json> void print_lldp_devices(Json &json, const WtpRecord &wtp)
{
    json.array("lldp_dev_list");
    for (const LldpDevice &device : wtp.lldp_dev_list) {
        json.object();
        json.member("mac", device.mac);
        json.member("localPort", device.localPort);
        json.member("remotePort", device.remotePort);
        json.member("name", device.name);
        json.member("model", device.model);
        json.end_object();
    }
    json.end_array();
}

template <class Json> void print_topology(Json &json, const WtpRecord &wtp)
{
    json.array("dev_list");
    for (const TopoDev &device : wtp.dev_list) {
        json.object();
        json.member("type", device.type);
        json.member("mac", device.mac);
        json.member("ip", device.ip);
        json.member("name", device.name);
        json.single_line("model", device.model);
        json.member("system_time", device.system_time);
        json.member("update_time", device.update_time);
        json.member("link_info_last_time", device.link_info_last_time);
        json.member("no_link_info_first_time", device.no_link_info_first_time);
        json.array("link");
        for (const TopoLink &link : device.link) {
            json.object();
            json.member("local_port", link.local_port);
            json.member("mac", link.mac);
            json.member("remote_port", link.remote_port);
            json.end_object();
        }
        json.end_array();
        json.end_object();
    }
    json.end_array();
}

template <class Json> void print_switch(Json &json, const WtpRecord &wtp, bool basic)
{
    json.member("cfg_cap", wtp.cfg_cap);
    if (basic) {
        json.member("flick_reboot_flag", wtp.flick_reboot_flag);
        return;
    }
    json.member("sw_max_port", wtp.switch_hw_port.size());
    json.member("sw_max_trunk", wtp.sw_max_trunk);
    json.member("sw_max_trunk_member", wtp.sw_max_trunk_member);
    json.member("sw_max_vlan_num", wtp.sw_max_vlan_num);
    json.member("sw_max_managed_ap", wtp.sw_max_managed_ap);
    json.member("sw_max_mirror_num", wtp.sw_max_mirror_num);
    json.member("sw_max_multicast_num", wtp.sw_max_multicast_num);
    json.member("sw_max_power_budget", wtp.sw_max_power_budget);
    json.member("sw_min_power_budget", wtp.sw_min_power_budget);
    json.member("sw_max_static_mac_num", wtp.sw_max_static_mac_num);
    json.member("sw_dev_suport_type", wtp.sw_dev_suport_type);
    print_ports(json, wtp);
    print_lldp_devices(json, wtp);
    print_poe(json, wtp);
    print_topology(json, wtp);
}

// One device as an object. `basic` and `password` are those of print_wtp_details.
template <class Json> void print_wtp(Json &json, const WtpRecord &wtp, ReportParts parts)
{
    json.object();
    print_common(json, wtp);
    if (wtp.wtp_type == DEVICE_ACCESS_POINT)
        print_access_point(json, wtp, parts.basic);
    else if (wtp.wtp_type == DEVICE_SWITCH)
        print_switch(json, wtp, parts.basic);
    if (wtp.wtp_cfg != nullptr) {
        json.object("wtp_cfg");
        print_cfg_json(json, wtp, parts.password);
        json.end_object();
    }
    json.end_object();
}

} // namespace json_members
