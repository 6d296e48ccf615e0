// SPDX-License-Identifier: MIT
// The configuration lines of the detailed text report.
#include "report/text_report.h"

// Shows all groups, whichever of them the security mode uses.
static void print_security(TextWriter &out, const WlanCfg &wlan)
{
    out.line("      Security Mode\t\t\t", wlan.sec_mode);
    out.put("      WEP:\n");
    out.line("        Auth Type\t\t\t", wlan.wep.auth_type);
    out.line("        Input Method\t\t\t", wlan.wep.in_type);
    out.line("        Key Length\t\t\t", wlan.wep.key_len);
    out.line("        Default Key Id\t\t\t", wlan.wep.def_key);
    uint32_t key_number = 0;
    for (std::string_view key : wlan.wep.key) {
        out.item("        Key", ++key_number);
        out.line("\t\t\t\t", key);
    }
    out.put("      WPA:\n");
    out.line("        Encrypt Mode\t\t\t", wlan.wpa.enc_mode);
    out.line("        Protected Management Frames\t", wlan.wpa.pmf_enable);
    out.line("        Passphrase\t\t\t", wlan.wpa.passphrase);
    out.line("        Group Key Update Interval\t", wlan.wpa.group_key_int);
    out.put("        Radius:\n");
    out.line("          Address\t\t\t", wlan.wpa.radius.addr);
    out.line("          Port\t\t\t\t", wlan.wpa.radius.port);
    out.line("          Secret\t\t\t", wlan.wpa.radius.secret);
    out.put("          Accounting:\n");
    out.line("            Enable\t\t\t", wlan.acc.enable);
    out.line("            Address\t\t\t", wlan.acc.addr);
    out.line("            Port\t\t\t", wlan.acc.port);
    out.line("            Secret\t\t\t", wlan.acc.secret);
    out.line("            Intermi Interval\t\t", wlan.acc.interval);
    out.put("        NAS:\n");
    out.line("          ID Enable\t\t\t", wlan.nas.id_enable);
    out.line("          ID\t\t\t", wlan.nas.id);
    out.line("          Port Enable\t\t\t", wlan.nas.port_enable);
    out.line("          Port\t\t\t\t", wlan.nas.port);
    out.line("          IP Enable\t\t\t", wlan.nas.ip_enable);
    out.line("          IP\t\t\t\t", wlan.nas.ip);
}

static void print_wlan_cfg(TextWriter &out, const WlanCfg &wlan, uint32_t number)
{
    out.item("    WLAN", number);
    out.put(":\n");
    out.line("      Enable\t\t\t\t", wlan.enable);
    out.line("      SSID\t\t\t\t", wlan.ssid);
    out.line("      Suppressed SSID\t\t\t", wlan.supr_ssid);
    out.line("      Station Separation\t\t", wlan.sta_sep);
    out.line("      layer2 Isolation\t\t", wlan.layer2Isolation);
    out.line("      Isolation\t\t\t\t", wlan.isolation);
    out.line("      VLAN\t\t\t\t", wlan.vlan);
    out.line("      Download Lmit\t\t\t", wlan.downloadlimit);
    out.line("      Upload Lmit\t\t\t\t", wlan.uploadlimit);
    out.line("      Download Per User Enable\t\t\t", wlan.downperuser_en);
    out.line("      Upload Per User Enable\t\t\t\t", wlan.uploadperuser_en);
    out.line("      Download rate mode\t\t\t\t", wlan.downloadMode);
    out.line("      Upload rate mode\t\t\t\t", wlan.uploadMode);
    out.line("      Roaming Enable\t\t\t", wlan.roaming.enable);
    out.line("      Roaming Adv Search\t\t", wlan.roaming.adv_search);
    out.line("      Download Limit\t\t\t", wlan.downloadlimit);
    out.line("      Upload Limit\t\t\t", wlan.uploadlimit);
    out.put("      ACL:\n");
    out.line("        Mode\t\t\t\t", wlan.acl.mode);
    for (const Mac &mac : wlan.acl.mac)
        out.line("        ", mac);
    print_security(out, wlan);
}

static void print_portal(TextWriter &out, const PortalCfg &portal)
{
    out.put("    Portal:\n");
    out.line("      Enable\t\t\t\t", portal.enable);
    out.line("      Type\t\t\t\t", portal.login_type);
    out.line("      Radius\t\t\t\t\t", portal.radius_server);
    out.line("      Redirect\t\t\t\t\t", portal.userurl);
    out.line("      WalledGarden\t\t\t\t\t", portal.walled_garden.enable);
    out.line("      WalledGardenPage\t\t\t\t\t", portal.walled_garden.pages);
    out.line("\t  RadiusPort\t\t\t\t\t", portal.radius_port);
    out.line("\t  RadiusSecret\t\t\t\t\t", portal.radius_secret);
    // From here on the items share one line, up to the one behind UamFormat.
    out.item("\t  SessionTimeout\t\t\t\t\t", portal.session_timeout);
    out.item("\t  SessionTimeoutEnable\t\t\t\t\t", portal.session_timeout_enable);
    out.item("\t  IdleTimeout\t\t\t\t\t", portal.idle_timeout);
    out.item("\t  IdleTimeoutEnable", portal.idle_timeout_enable);
    out.item("\t  AccountingEnable\t\t\t\t\t", portal.accounting_enable);
    out.item("\t  AccountingTime\t\t\t\t\t", portal.accounting_time);
    out.item("\t  AuthType\t\t\t\t\t", portal.auth_type);
    out.item("\t  ExternalServer\t\t\t\t\t", portal.external_server);
    out.item("\t  ExternalSecret\t\t\t\t\t", portal.external_secret);
    out.item("\t  AccountingServer\t\t\t\t\t", portal.account_server);
    out.item("\t  AccountingPort\t\t\t\t\t", portal.accounting_port);
    out.item("\t  AccountingSecret\t\t\t\t\t", portal.accounting_secret);
    out.line("      UamFormat\t\t\t\t\t", portal.uamformat);
    out.line("      LocalAuth\t\t\t\t\t", portal.local_auth);
    out.line("      Port\t\t\t\t\t", portal.port);
    out.line("      HttpsEnable\t\t\t\t\t", portal.https_enable);
    out.line("\t  RadiusSecret2\t\t\t\t\t", portal.radius_secret2);
    out.line("      Radius2\t\t\t\t\t", portal.radius_server2);
}

static void print_radio_cfg(TextWriter &out, const RadioCfg &radio, uint32_t number)
{
    out.item("  Radio", number);
    out.put(":\n");
    out.line("    Operation Mode\t\t\t", radio.op_mode);
    out.line("    Wireless Mode\t\t\t", radio.wl_mode);
    out.line("    Country Code\t\t\t", radio.country);
    out.put("    Channel:\n");
    out.line("      HT Mode\t\t\t\t", radio.channel.ht);
    out.line("      Extension\t\t\t\t", radio.channel.ext);
    out.line("      Value\t\t\t\t", radio.channel.val);
    out.line("    Tx Power\t\t\t\t", radio.tx_power);
    out.line("    Obey Regulatory Power\t\t", radio.obey_regulatory_power);
    out.item("    Data Rate\t\t\t\t", data_rate_text(radio.data_rate));
    out.put("\n");
    out.line("    Bit Rate\t\t\t\t", radio.bit_rate);
    out.line("    AX Enable\t\t\t\t", radio.ax_enable);
    out.line("    RTS/CTS Threshold\t\t\t", radio.rts_cts_threshold);
    out.line("    Distance\t\t\t\t", radio.distance);
    out.put("    Aggregation:\n");
    out.line("      Enable\t\t\t\t", radio.aggregation.enable);
    out.line("      Frames\t\t\t\t", radio.aggregation.frames);
    out.line("      Bytes\t\t\t\t", radio.aggregation.maxbytes);
    out.put("    Max Clients:\n");
    out.line("      Enable\t\t\t\t", radio.limited_clients.enable);
    out.line("      Clients\t\t\t\t", radio.limited_clients.count);
    print_portal(out, radio.portal);
    out.put("    Mesh:\n");
    out.line("      Enable\t\t\t\t", radio.mesh.enable);
    out.line("      ID\t\t\t\t", radio.mesh.id);
    out.line("      WPA Key\t\t\t\t", radio.mesh.wpa_key);
    out.line("      Link Robust Threshold\t\t\t\t", radio.mesh.link_robust_threshold);
    out.line("    Fast Handover Status\t\t\t", radio.fasthandover.status);
    out.line("    Fast Handover RSSI\t\t\t", radio.fasthandover.rssi);
    uint32_t wlan_number = 0;
    for (const WlanCfg &wlan : radio.wlan)
        print_wlan_cfg(out, wlan, ++wlan_number);
}

static void print_access_point_cfg(TextWriter &out, const WtpCfg &cfg)
{
    out.line("  Banstreering\t\t\t\t", cfg.bandsteer);
    out.put("  Banstreer:\n");
    out.line("    mode\t\t\t\t", cfg.bandsteering.mode);
    out.line("    percent_enable\t\t\t\t", cfg.bandsteering.percent_en);
    out.line("    rssi_enable\t\t\t\t", cfg.bandsteering.rssi_en);
    out.line("    rssi\t\t\t\t", cfg.bandsteering.rssi);
    out.line("    percent\t\t\t\t", cfg.bandsteering.percent);
    out.line("  Fast Handover Status\t\t\t", cfg.fasthandover.status);
    out.line("  Fast Handover RSSI\t\t\t", cfg.fasthandover.rssi);
    out.put("  Guest Network\n");
    out.line("    Address\t\t\t\t", cfg.guest_network.addr);
    out.line("    Mask\t\t\t\t", cfg.guest_network.mask);
    out.line("    Start\t\t\t\t", cfg.guest_network.start);
    out.line("    End\t\t\t\t\t", cfg.guest_network.end);
    out.line("    WINS\t\t\t\t", cfg.guest_network.wins);
    out.put("  Led\n");
    out.line("    Power\t\t\t\t", cfg.led.power);
    out.line("    Lan\t\t\t\t", cfg.led.lan);
    out.line("    Wlan0\t\t\t\t", cfg.led.wlan0);
    out.line("    Wlan1\t\t\t\t", cfg.led.wlan1);
    out.line("    Wlan2\t\t\t\t", cfg.led.wlan2);
    out.line("    Mesh\t\t\t\t", cfg.led.mesh);
    out.line("  Managed vlan id\t\t", cfg.manage_vlan_id);
    out.put("  Mesh:\n");
    out.line("    Mesh Enable Total\t\t\t\t", cfg.mesh.enable_total);
    uint32_t radio_number = 0;
    for (const RadioCfg &radio : cfg.radio)
        print_radio_cfg(out, radio, ++radio_number);
    uint32_t lan_port_number = 0;
    for (const LanPortCfg &lan_port : cfg.lan_port) {
        out.item("  LanPort", ++lan_port_number);
        out.put(":\n");
        out.line("    Enable:\t\t\t", lan_port.en);
        out.line("    VLAN ID:\t\t\t", lan_port.vid);
    }
}

// These numbers are shown signed.
static void print_switch_cfg(TextWriter &out, const WtpCfg &cfg)
{
    for (const SwitchPortCfg &port : cfg.switch_port) {
        out.line("  Port", static_cast<int32_t>(port.port));
        out.line("    Speed Mode\t\t\t\t", static_cast<int32_t>(port.mode));
        out.line("    Flow Control\t\t\t\t", static_cast<int32_t>(port.flow_control));
    }
    out.line("  PoE PowerBudget\t\t", static_cast<int32_t>(cfg.power_budget));
    for (const PoePortCfg &port : cfg.poe_port) {
        out.item("  Port", static_cast<int32_t>(port.port));
        out.put(" PoE\n");
        out.line("    Enable\t\t\t\t", static_cast<int32_t>(port.enable));
        out.line("    Power Limit\t\t\t\t", static_cast<int32_t>(port.user_power_limit));
        out.line("    Power Type\t\t\t\t", static_cast<int32_t>(port.power_limit_type));
        out.line("    Priority\t\t\t\t", static_cast<int32_t>(port.priority));
    }
}

void print_cfg_text(TextWriter &out, const WtpRecord &wtp, bool password)
{
    const WtpCfg &cfg = *wtp.wtp_cfg;
    out.put("Configuration:\n");
    out.line("  Name\t\t\t\t\t", cfg.name);
    out.line("  Location\t\t\t\t", cfg.location);
    out.line("  Admin\t\t\t\t\t", cfg.admin);
    if (password)
        out.line("  Password MD5\t\t\t\t", cfg.password_md5);
    if (cfg.ip.is_zero()) {
        out.put("  DHCP mode\n");
    } else {
        out.line("  IP\t\t\t\t\t", cfg.ip);
        out.line("  Mask\t\t\t\t\t", cfg.mask);
        out.line("  Gateway\t\t\t\t", cfg.gateway);
        out.line("  DNS1\t\t\t\t\t", cfg.dns1);
        out.line("  DNS2\t\t\t\t\t", cfg.dns2);
    }
    if (wtp.wtp_type == DEVICE_ACCESS_POINT)
        print_access_point_cfg(out, cfg);
    else if (wtp.wtp_type == DEVICE_SWITCH)
        print_switch_cfg(out, cfg);
}
