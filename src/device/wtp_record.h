// SPDX-License-Identifier: MIT
// A device as the controller reports it. Members are named as the JSON report names them; the order
// on the wire is in wtp_layout.h.
//
// Integers are in host order, addresses as they came. Everything is zero or empty until it is read.
// Nothing here owns anything: texts and tables are views of memory that somebody else keeps.
#pragma once

#include "proto/device_kind.h"
#include "util/array_view.h"
#include "util/ipv4.h"
#include "util/mac.h"

#include <cstdint>
#include <string_view>

enum WtpState : uint8_t { WTP_OFFLINE = 0, WTP_ONLINE = 5 };
enum WtpSubState : uint8_t { WTP_SUB_UPGRADING = 4, WTP_SUB_WAITING = 9 };

// The security modes of a WLAN that a program has to name: of 2 to 12 each uses the WPA settings,
// and of these the enterprise ones a RADIUS server.
enum SecurityMode : uint32_t {
    SECURITY_OPEN = 0,
    SECURITY_WEP = 1,
    SECURITY_WPA_FIRST = 2,
    SECURITY_PSK = 3,
    SECURITY_ENTERPRISE = 6,
    SECURITY_WPA_LAST = 12,
};

constexpr bool uses_wpa(uint32_t mode)
{
    return mode >= SECURITY_WPA_FIRST && mode <= SECURITY_WPA_LAST;
}
constexpr bool uses_radius(uint32_t mode)
{
    return (mode >= 5 && mode <= 7) || mode == 11 || mode == 12;
}

// What a device can be configured with, as flags of the controller's.
struct CfgCap {
    uint8_t flag[21] = {};
};

struct Md5Digest {
    uint8_t byte[16] = {};
};

// A host name in a fixed slot; ends at its first NUL, or with the slot.
struct HostSlot {
    char text[256] = {};
};

struct StationInfo {
    Mac mac;
    uint32_t tx = 0, rx = 0; // kilobytes
    int32_t rssi = 0;        // dBm
    std::string_view os;
    std::string_view hostname; // printable ASCII; emptied when the controller sent anything else
    Ipv4 ip;
};

struct WlanInfo {
    Mac bssid;
    CfgCap cfg_cap;
    uint32_t tx_pkt = 0, tx_bytes = 0, rx_pkt = 0, rx_bytes = 0;
    ArrayView<StationInfo> sta;
};

struct RadioInfo {
    Mac mac;
    uint32_t type = 0;
    uint32_t max_tx_power = 0;
    CfgCap cfg_cap;
    struct {
        int32_t channel = 0;
        uint32_t tx_power = 0, tx_power_percent = 0;
    } cur_cfg;
    struct {
        int32_t role = 0;
        Mac bssid;
    } mesh;
    ArrayView<WlanInfo> wlan;
};

struct SwitchHwPort {
    uint32_t port = 0, port_type = 0;
};

struct SwitchPortInfo {
    uint32_t port = 0, enable = 0, speed = 0, link_status = 0, flow_control = 0, duplex = 0,
             auto_neg = 0;
};

struct TrunkPortInfo {
    uint32_t id = 0, mode = 0;
    std::string_view active_port, port; // port: the member ports
};

struct LldpDevice {
    uint32_t localPort = 0;
    Mac mac;
    std::string_view remotePort, name, model;
};

struct PoePortInfo {
    uint32_t port = 0, enable = 0, poe_class = 0, priority = 0, power_limit_type = 0,
             user_power_limit = 0, status = 0, output_voltage = 0, output_current = 0,
             output_power = 0, temperature = 0;
};

struct TopoLink {
    uint32_t local_port = 0;
    Mac mac;
    std::string_view remote_port;
};

struct TopoDev {
    uint32_t type = 0;
    Mac mac;
    Ipv4 ip;
    std::string_view name, model; // model: the neighbour's description
    uint32_t update_time = 0, system_time = 0, link_info_last_time = 0, no_link_info_first_time = 0;
    ArrayView<TopoLink> link;
};

// The configuration that the controller has stored for a device.

struct BandSteeringCfg {
    int32_t mode = 0, percent_en = 0, rssi_en = 0, rssi = 0, percent = 0;
};

struct FastHandoverCfg {
    int32_t status = 0, rssi = 0;
};

struct PortalCfg {
    uint32_t enable = 0, login_type = 0;
    std::string_view userurl;
    struct {
        uint32_t enable = 0;
        std::string_view pages;
    } walled_garden;
    uint32_t session_timeout = 0, session_timeout_enable = 0;
    uint32_t idle_timeout = 0, idle_timeout_enable = 0;
    uint32_t auth_type = 0;
    std::string_view external_server, external_secret, uamformat, local_auth;
    Ipv4 radius_server;
    uint16_t radius_port = 0;
    std::string_view radius_secret;
    uint32_t accounting_enable = 0;
    Ipv4 account_server;
    uint16_t accounting_port = 0;
    std::string_view accounting_secret;
    uint32_t accounting_time = 0;
    uint16_t port = 0;
    uint32_t https_enable = 0;
    std::string_view radius_secret2;
    Ipv4 radius_server2;
    uint32_t network_type = 0; // WLANs only
};

struct WlanCfg {
    uint32_t enable = 0;
    std::string_view ssid;
    uint32_t supr_ssid = 0, sta_sep = 0, isolation = 0, vlan = 0;
    struct {
        uint32_t mode = 0;
        ArrayView<Mac> mac;
    } acl;
    struct {
        uint32_t enable = 0, adv_search = 0;
    } roaming;
    int32_t downloadlimit = 0, uploadlimit = 0, downperuser_en = 0, uploadperuser_en = 0,
            downloadMode = 0, uploadMode = 0;
    uint32_t sec_mode = 0;
    struct {
        uint32_t auth_type = 0, in_type = 0, key_len = 0, def_key = 0;
        std::string_view key[4];
    } wep;
    struct {
        uint32_t enc_mode = 0;
        std::string_view passphrase;
        uint32_t group_key_int = 0;
        struct {
            Ipv4 addr;
            uint16_t port = 0;
            std::string_view secret;
        } radius;
        uint32_t pmf_enable = 0, suiteb_en = 0;
    } wpa;
    struct {
        uint32_t enable = 0;
        Ipv4 addr;
        uint16_t port = 0;
        std::string_view secret;
        uint32_t interval = 0;
    } acc;
    uint32_t layer2Isolation = 0;
    ArrayView<Mac> l2macWlist;
    struct {
        uint32_t id_enable = 0;
        std::string_view id;
        uint32_t port_enable = 0;
        uint16_t port = 0;
        uint32_t ip_enable = 0;
        Ipv4 ip;
    } nas;
    PortalCfg portal;
    BandSteeringCfg bandsteering;
    std::string_view hotspot20; // a JSON value
};

struct RadioCfg {
    uint32_t country = 0, op_mode = 0, wl_mode = 0;
    struct {
        uint32_t ht = 0, ext = 0, val = 0;
    } channel;
    uint32_t tx_power = 0, obey_regulatory_power = 0;
    int32_t data_rate = 0; // a rate code, see data_rate_text
    uint32_t bit_rate = 0, ax_enable = 0, rts_cts_threshold = 0;
    struct {
        uint32_t enable = 0, count = 0;
    } limited_clients;
    struct {
        uint32_t enable = 0, frames = 0, maxbytes = 0;
    } aggregation;
    uint32_t distance = 0;
    ArrayView<WlanCfg> wlan;
    PortalCfg portal;
    struct {
        int32_t enable = 0;
        std::string_view id, wpa_key;
        int16_t link_robust_threshold = 0;
    } mesh;
    FastHandoverCfg fasthandover;
};

struct LanPortCfg {
    int32_t en = 0, vid = 0, vlan_mode = 0;
};

struct SwitchPortCfg {
    uint32_t port = 0, mode = 0, flow_control = 0;
    std::string_view descp;
};

struct PoePortCfg {
    uint32_t port = 0, enable = 0, priority = 0, power_limit_type = 0, user_power_limit = 0;
};

struct PdLifeguard {
    uint32_t port = 0, enable = 0, mode = 0, action = 0;
    Ipv4 specified_ip;
    uint32_t ping_interval = 0, ping_max_count = 0, power_recovery_interval = 0,
             reboot_max_retry_count = 0, reboot_count = 0, pd_bootup_time = 0;
    std::string_view status;
};

struct PdlStatus {
    uint32_t port = 0, state = 0, mode = 0, polling_method = 0;
    std::string_view mac; // in text form
    Ipv4 management_ip;
    std::string_view action;
};

struct WtpCfg {
    Ipv4 ip, mask, gateway, dns1, dns2; // ip 0.0.0.0: DHCP
    std::string_view name, location, admin;
    int32_t timezone = 0;
    ArrayView<HostSlot> ac_list;

    // Access points only.
    Md5Digest password_md5;
    int32_t bandsteer = 0;
    BandSteeringCfg bandsteering;
    FastHandoverCfg fasthandover;
    struct {
        Ipv4 addr, mask, start, end, wins;
    } guest_network;
    struct {
        int32_t power = 0, lan = 0, wlan0 = 0, wlan1 = 0, wlan2 = 0, mesh = 0;
    } led;
    int32_t manage_vlan_id = 0, log_remote_en = 0, log_traffic_en = 0;
    std::string_view log_remote_conf;
    ArrayView<LanPortCfg> lan_port;
    struct {
        int32_t enable_total = 0;
    } mesh;
    ArrayView<RadioCfg> radio;

    // Switches only.
    std::string_view sw_extra_text; // sent by the controller, shown nowhere
    ArrayView<SwitchPortCfg> switch_port;
    int32_t redundancyMode = 0;
    ArrayView<Mac> manage_mac_list;
    uint32_t power_budget = 0;
    ArrayView<PoePortCfg> poe_port;
    uint32_t pdl_enable = 0;
    ArrayView<PdLifeguard> pd_lifeguard;
    ArrayView<PdlStatus> pdl_status;
};

struct WtpRecord {
    uint8_t wtp_type = 0; // a DeviceKind; any other value has the common members only
    Mac mac;
    Ipv4 ip;
    uint16_t port = 0;
    std::string_view model, sn;
    uint8_t managed = 0, unavaiable_fw = 0;
    uint8_t upg_img = 0; // not 0: flagged for an upgrade
    std::string_view new_fw_img, new_fw_ver;
    uint8_t upg_state = 0, unavaiable_addr = 0;
    uint8_t state = 0, sub_state = 0, progress = 0;
    std::string_view sw_ver, cw_ver, name;
    uint32_t uptime = 0;                                    // seconds
    uint32_t join_time = 0, last_time = 0, change_time = 0; // seconds since 1970
    struct {
        Ipv4 ip, mask, gateway, dns1, dns2;
    } cur_cfg;
    struct {
        uint32_t total = 0, used = 0;
    } mem;
    CfgCap cfg_cap; // access points and switches

    // Access points only.
    uint32_t cap_code = 0;
    std::string_view sku;
    ArrayView<RadioInfo> radio;

    // Switches only.
    uint32_t flick_reboot_flag = 0;
    uint32_t sw_max_trunk = 0, sw_max_vlan_num = 0, sw_max_managed_ap = 0, sw_max_mirror_num = 0,
             sw_max_multicast_num = 0, sw_max_power_budget = 0, sw_min_power_budget = 0,
             sw_max_static_mac_num = 0, sw_max_trunk_member = 0, sw_dev_suport_type = 0;
    ArrayView<SwitchHwPort> switch_hw_port; // its length is the report's sw_max_port
    ArrayView<SwitchPortInfo> switch_port;
    ArrayView<TrunkPortInfo> trunk_port;
    ArrayView<LldpDevice> lldp_dev_list;
    struct {
        uint32_t power_budget = 0, allocated_power = 0; // watts
    } poe_global;
    ArrayView<PoePortInfo> poe_port;
    ArrayView<TopoDev> dev_list;

    WtpCfg *wtp_cfg = nullptr; // null when the reply carried none
};
