// SPDX-License-Identifier: MIT
// The wire order of a device record, written down once for all who read or write one. See wire.h
// for what a visitor is.
#pragma once

#include "device/cfg_layout.h"
#include "device/wire.h"
#include "device/wtp_record.h"

template <RecordVisitor Wire> void visit_fields(Wire &wire, StationInfo &sta)
{
    wire("mac", sta.mac);
    wire("tx", sta.tx);
    wire("rx", sta.rx);
    wire("rssi", sta.rssi);
    wire("os", sta.os);
    wire.hostname("hostname", sta.hostname);
    wire("ip", sta.ip);
}

template <RecordVisitor Wire> void visit_fields(Wire &wire, WlanInfo &wlan)
{
    wire("bssid", wlan.bssid);
    wire("cfg_cap", wlan.cfg_cap);
    wire("tx_pkt", wlan.tx_pkt);
    wire("tx_bytes", wlan.tx_bytes);
    wire("rx_pkt", wlan.rx_pkt);
    wire("rx_bytes", wlan.rx_bytes);
    if (wire.present(Section::stations))
        wire.rows("sta", wlan.sta, COUNT_U32);
}

template <RecordVisitor Wire> void visit_fields(Wire &wire, RadioInfo &radio)
{
    wire("mac", radio.mac);
    wire("type", radio.type);
    wire("max_tx_power", radio.max_tx_power);
    wire("cfg_cap", radio.cfg_cap);
    wire("cur_cfg.channel", radio.cur_cfg.channel);
    wire("cur_cfg.tx_power", radio.cur_cfg.tx_power);
    wire("cur_cfg.tx_power_percent", radio.cur_cfg.tx_power_percent);
    wire("mesh.role", radio.mesh.role);
    wire("mesh.bssid", radio.mesh.bssid);
    wire.rows("wlan", radio.wlan, COUNT_U32);
}

template <RecordVisitor Wire> void visit_fields(Wire &wire, SwitchHwPort &port)
{
    wire("port", port.port);
    wire("port_type", port.port_type);
}

template <RecordVisitor Wire> void visit_fields(Wire &wire, SwitchPortInfo &port)
{
    wire("port", port.port);
    wire("enable", port.enable);
    wire("speed", port.speed);
    wire("link_status", port.link_status);
    wire("flow_control", port.flow_control);
    wire("duplex", port.duplex);
    wire("auto_neg", port.auto_neg);
}

template <RecordVisitor Wire> void visit_fields(Wire &wire, TrunkPortInfo &trunk)
{
    wire("id", trunk.id);
    wire("mode", trunk.mode);
    wire("active_port", trunk.active_port);
    wire("port", trunk.port);
}

template <RecordVisitor Wire> void visit_fields(Wire &wire, LldpDevice &device)
{
    wire("mac", device.mac);
    wire("localPort", device.localPort);
    wire("remotePort", device.remotePort);
    wire("name", device.name);
    wire("model", device.model);
}

template <RecordVisitor Wire> void visit_fields(Wire &wire, PoePortInfo &port)
{
    wire("port", port.port);
    wire("enable", port.enable);
    wire("poe_class", port.poe_class);
    wire("priority", port.priority);
    wire("power_limit_type", port.power_limit_type);
    wire("user_power_limit", port.user_power_limit);
    wire("status", port.status);
    wire("output_voltage", port.output_voltage);
    wire("output_current", port.output_current);
    wire("output_power", port.output_power);
    wire("temperature", port.temperature);
}

template <RecordVisitor Wire> void visit_fields(Wire &wire, TopoLink &link)
{
    wire("local_port", link.local_port);
    wire("mac", link.mac);
    wire("remote_port", link.remote_port);
}

template <RecordVisitor Wire> void visit_fields(Wire &wire, TopoDev &device)
{
    wire("type", device.type);
    wire("system_time", device.system_time);
    wire("update_time", device.update_time);
    wire("link_info_last_time", device.link_info_last_time);
    wire("no_link_info_first_time", device.no_link_info_first_time);
    wire("mac", device.mac);
    wire("ip", device.ip);
    wire("name", device.name);
    wire("model", device.model);
    wire.rows("link", device.link, COUNT_U32);
}

// The hardware ports come behind the other capacities, away from their count.
template <RecordVisitor Wire> void visit_switch_status(Wire &wire, WtpRecord &wtp)
{
    const uint32_t sw_max_port = wire.count("sw_max_port", wtp.switch_hw_port, COUNT_U32);
    wire("sw_max_trunk", wtp.sw_max_trunk);
    wire("sw_max_vlan_num", wtp.sw_max_vlan_num);
    wire("sw_max_managed_ap", wtp.sw_max_managed_ap);
    wire("sw_max_mirror_num", wtp.sw_max_mirror_num);
    wire("sw_max_multicast_num", wtp.sw_max_multicast_num);
    wire("sw_max_power_budget", wtp.sw_max_power_budget);
    wire("sw_min_power_budget", wtp.sw_min_power_budget);
    wire("sw_max_static_mac_num", wtp.sw_max_static_mac_num);
    wire("sw_max_trunk_member", wtp.sw_max_trunk_member);
    wire("sw_dev_suport_type", wtp.sw_dev_suport_type);
    wire.counted_rows("switch_hw_port", wtp.switch_hw_port, sw_max_port);
    wire.rows("switch_port", wtp.switch_port, COUNT_U8);
    wire.rows("trunk_port", wtp.trunk_port, COUNT_U8);
    wire.rows("lldp_dev_list", wtp.lldp_dev_list, COUNT_U8);
    wire("poe_global.power_budget", wtp.poe_global.power_budget);
    wire("poe_global.allocated_power", wtp.poe_global.allocated_power);
    wire.rows("poe_port", wtp.poe_port, COUNT_U8);
    wire.rows("dev_list", wtp.dev_list, COUNT_U16);
}

template <RecordVisitor Wire> void visit_basics(Wire &wire, WtpRecord &wtp)
{
    wire("wtp_type", wtp.wtp_type);
    wire("mac", wtp.mac);
    wire("ip", wtp.ip);
    wire("port", wtp.port);
    wire("model", wtp.model);
    wire("sn", wtp.sn);
    wire("managed", wtp.managed);
    wire("unavaiable_fw", wtp.unavaiable_fw);
    wire("upg_img", wtp.upg_img);
    wire("new_fw_img", wtp.new_fw_img);
    wire("new_fw_ver", wtp.new_fw_ver);
    wire("upg_state", wtp.upg_state);
    wire("unavaiable_addr", wtp.unavaiable_addr);
    wire("state", wtp.state);
    wire("sub_state", wtp.sub_state);
    wire("progress", wtp.progress);
    wire("sw_ver", wtp.sw_ver);
    wire("cw_ver", wtp.cw_ver);
    wire("name", wtp.name);
    wire("uptime", wtp.uptime);
    wire("join_time", wtp.join_time);
    wire("last_time", wtp.last_time);
    wire("change_time", wtp.change_time);
    wire("cur_cfg.ip", wtp.cur_cfg.ip);
    wire("cur_cfg.mask", wtp.cur_cfg.mask);
    wire("cur_cfg.gateway", wtp.cur_cfg.gateway);
    wire("cur_cfg.dns1", wtp.cur_cfg.dns1);
    wire("cur_cfg.dns2", wtp.cur_cfg.dns2);
    wire("mem.total", wtp.mem.total);
    wire("mem.used", wtp.mem.used);
}

template <RecordVisitor Wire> void visit_fields(Wire &wire, WtpRecord &wtp)
{
    visit_basics(wire, wtp);
    if (wtp.wtp_type == DEVICE_ACCESS_POINT) {
        wire("cap_code", wtp.cap_code);
        wire("sku", wtp.sku);
        wire("cfg_cap", wtp.cfg_cap);
        if (wire.present(Section::detail))
            wire.rows("radio", wtp.radio, COUNT_U8);
    } else if (wtp.wtp_type == DEVICE_SWITCH) {
        wire("cfg_cap", wtp.cfg_cap);
        wire("flick_reboot_flag", wtp.flick_reboot_flag);
        if (wire.present(Section::detail))
            visit_switch_status(wire, wtp);
    }
    if (wire.present(Section::configuration) && wire.make(wtp.wtp_cfg))
        visit_fields(wire, *wtp.wtp_cfg, wtp.wtp_type);
}
