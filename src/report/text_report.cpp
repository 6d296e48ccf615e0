// SPDX-License-Identifier: MIT
#include "report/text_report.h"

#define SEPARATOR "-------------------------------------\n"

static void print_footer(TextWriter &out, uint32_t count)
{
    out.put(SEPARATOR);
    out.line("WTP count\t", count);
}

static void print_brief_line(TextWriter &out, const WtpRecord &wtp)
{
    out.item("", wtp.mac);
    out.item("  ", wtp.ip);
    out.item(":", wtp.port);
    out.item("\t", wtp.model);
    out.item("\t", wtp.managed != 0 ? "y " : "n ");
    out.item(" ", wtp.unavaiable_addr != 0 ? "x " : "o ");
    out.item(" ", wtp.unavaiable_fw != 0 ? "x " : "o ");
    out.item(" ", wtp.upg_state);
    out.item("\t", wtp.state);
    out.item("/", wtp.sub_state);
    out.item("\t", wtp.sw_ver);
    out.duration("\t", wtp.uptime);
}

void print_wtp_brief(WtpList &list)
{
    TextWriter out(standard_output);
    out.put("mac\t\t   address\t\tmodel\t\tmg ip fw ug\tstate\tversion\t\tuptime\n");
    uint32_t count = 0;
    for (const WtpRecord *wtp = first_wtp(list, WtpPart::basics); wtp != nullptr;
         wtp = next_wtp(list)) {
        print_brief_line(out, *wtp);
        count++;
    }
    print_footer(out, count);
}

static void print_common(TextWriter &out, const WtpRecord &wtp)
{
    out.line("MAC\t\t", wtp.mac);
    out.item("IP\t\t", wtp.ip);
    out.line(":", wtp.port);
    out.line("Model\t\t", wtp.model);
    if (wtp.wtp_type == DEVICE_ACCESS_POINT) {
        out.line("Capability Code\t", wtp.cap_code);
        out.line("SKU\t\t", wtp.sku);
    }
    out.line("SN\t\t", wtp.sn);
    out.line("Managed\t\t", wtp.managed);
    out.line("Unavailable FW\t", wtp.unavaiable_fw);
    out.line("Upgrade Image\t", wtp.upg_img);
    out.line("wtp type\t\t", wtp.wtp_type);
    out.line("Image Name\t", wtp.new_fw_img);
    out.line("Image Version\t", wtp.new_fw_ver);
    out.line("Upgrade state\t", wtp.upg_state);
    out.line("Unavailable IP\t", wtp.unavaiable_addr);
    out.line("State\t\t", wtp.state);
    out.line("SubState\t", wtp.sub_state);
    out.line("Progress\t", wtp.progress);
    out.line("Sw Ver\t\t", wtp.sw_ver);
    out.line("Capwap Ver\t", wtp.cw_ver);
    out.line("Name\t\t", wtp.name);
    out.duration("Uptime\t\t", wtp.uptime);
    out.item("Join Time\t", time_text(wtp.join_time));
    out.item("Last Active\t", time_text(wtp.last_time));
    out.item("State Change\t", time_text(wtp.change_time));
    out.item("Memory Usage\t", wtp.mem.used);
    out.line("/", wtp.mem.total);
}

static void print_station(TextWriter &out, const StationInfo &sta)
{
    out.item("      ", sta.mac);
    out.item(" TX ", sta.tx);
    out.item("KB RX ", sta.rx);
    out.item("KB RSSI ", sta.rssi);
    out.put("dBm\n");
    out.line("      IP ", sta.ip);
    out.line("     OS ", sta.os);
    out.line("     HostName ", sta.hostname);
}

static void print_wlan(TextWriter &out, const WlanInfo &wlan, uint32_t number)
{
    out.item("  Wlan", number);
    out.put(" Info:\n");
    out.line("    BSSID\t", wlan.bssid);
    out.line("    Cfg Capability\t", wlan.cfg_cap);
    out.line("    Tx Pkts\t", wlan.tx_pkt);
    out.line("    Tx Bytes\t", wlan.tx_bytes);
    out.line("    Rx Pkts\t", wlan.rx_pkt);
    out.line("    Rx Bytes\t", wlan.rx_bytes);
    out.put("    Stations:\n");
    for (const StationInfo &sta : wlan.sta)
        print_station(out, sta);
}

static void print_radio(TextWriter &out, const RadioInfo &radio, uint32_t number)
{
    out.item("Radio", number);
    out.put(" Info:\n");
    out.line("  MAC\t\t", radio.mac);
    out.line("  Type\t\t", radio.type);
    out.line("  Cfg Capability\t", radio.cfg_cap);
    uint32_t wlan_number = 0;
    for (const WlanInfo &wlan : radio.wlan)
        print_wlan(out, wlan, ++wlan_number);
}

static void print_switch_port(TextWriter &out, const SwitchPortInfo &port)
{
    out.item("Port", port.port);
    out.put(" :\n");
    out.line("    Speed\t", port.speed);
    out.line("    Status\t", port.enable);
    out.line("    Link Status\t", port.link_status);
    out.line("    Flow Control\t", port.flow_control);
    out.line("    Duplex Mode\t", port.duplex);
    out.line("    Auto Negotiation\t", port.auto_neg);
}

static void print_poe_port(TextWriter &out, const PoePortInfo &port)
{
    out.item("Port", port.port);
    out.put(" PoE:\n");
    out.line("    Enable\t", port.enable);
    out.line("    Class\t", port.poe_class);
    out.line("    Priority\t", port.priority);
    out.line("    Power Limit Type\t", port.power_limit_type);
    out.line("    Power Limit\t", port.user_power_limit);
    out.line("    Status\t", port.status);
    out.line("    Voltage\t", port.output_voltage);
    out.line("    Current\t", port.output_current);
    out.line("    Power\t", port.output_power);
    out.line("    Temperature\t", port.temperature);
}

static void print_neighbour(TextWriter &out, const TopoDev &device)
{
    out.line("    Device Type\t", device.type);
    out.line("    System Time\t", device.system_time);
    out.line("    Update Time\t", device.update_time);
    out.line("    Link Last Time \t", device.link_info_last_time);
    out.line("    No Link First Time\t", device.no_link_info_first_time);
    out.line("    MAC\t", device.mac);
    out.line("    IP\t", device.ip);
    out.line("    Name\t", device.name);
    out.line("    Dsec\t", device.model);
    out.put("    Link Info:\n");
    for (const TopoLink &link : device.link) {
        out.line("        Remote Port\t", link.remote_port);
        out.line("        Local Port\t", link.local_port);
        out.line("        MAC\t", link.mac);
    }
}

static void print_switch(TextWriter &out, const WtpRecord &wtp)
{
    for (const SwitchPortInfo &port : wtp.switch_port)
        print_switch_port(out, port);
    out.put("\n");
    out.item("Total Power Budget:\t", wtp.poe_global.power_budget);
    out.put(" Watts\n");
    out.item("Consumed Power:\t", wtp.poe_global.allocated_power);
    out.put(" Watts\n");
    for (const PoePortInfo &port : wtp.poe_port)
        print_poe_port(out, port);
    out.put("\nTopology\n");
    for (const TopoDev &device : wtp.dev_list)
        print_neighbour(out, device);
}

static void print_wtp(TextWriter &out, const WtpRecord &wtp, ReportParts parts)
{
    out.put(SEPARATOR);
    print_common(out, wtp);
    if (wtp.wtp_type == DEVICE_ACCESS_POINT) {
        out.line("Cfg Capability\t", wtp.cfg_cap);
        if (!parts.basic) {
            uint32_t number = 0;
            for (const RadioInfo &radio : wtp.radio)
                print_radio(out, radio, ++number);
            out.put("\n");
        }
    }
    if (wtp.wtp_type == DEVICE_SWITCH && !parts.basic)
        print_switch(out, wtp);
    if (wtp.wtp_cfg != nullptr)
        print_cfg_text(out, wtp, parts.password);
}

void print_wtp_details(WtpList &list, ReportParts parts)
{
    TextWriter out(standard_output);
    uint32_t count = 0;
    for (const WtpRecord *wtp = first_wtp(list, WtpPart::whole); wtp != nullptr;
         wtp = next_wtp(list)) {
        print_wtp(out, *wtp, parts);
        count++;
    }
    print_footer(out, count);
}
