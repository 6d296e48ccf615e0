// SPDX-License-Identifier: MIT
#include "setting_texts.h"

constexpr const SettingText SETTING_TEXTS[] = {
    {"wtp_cfg", "Settings of the device", "Only the settings that the file holds are sent."},
    {"wtp_cfg.name", "Device name", "The name that reports show for the device."},
    {"wtp_cfg.location", "Location", "Where the device is mounted."},
    {"wtp_cfg.admin", "Administrator name", "The login name for the device's own administration."},
    {"wtp_cfg.password", "Administrator password", "The password of the device's administrator."},
    {"wtp_cfg.ipv4", "Address settings",
     "The device's address, mask and gateway as dotted IPv4 addresses, joined by slashes: "
     "192.168.1.10/255.255.255.0/192.168.1.1. All three 0.0.0.0 stands for DHCP. The mask must be "
     "contiguous and the address one that a host of its network can have. The gateway is in the "
     "same network, or 0.0.0.0 for none."},
    {"wtp_cfg.dns1", "First name server", "The DNS server that the device asks first."},
    {"wtp_cfg.dns2", "Second name server",
     "The DNS server that the device asks when the first one fails."},
    {"wtp_cfg.ac_list[]", "Controllers",
     "Host names or addresses of the controllers that the device tries to join. An empty list "
     "stands for none."},

    // Access points
    {"wtp_cfg.bandsteer", "Band steering",
     "1 turns band steering on for the whole access point, 0 turns it off."},
    {"wtp_cfg.bandsteering", "Band steering of the access point",
     "How clients that can use both bands are moved between them."},
    {"wlan[].bandsteering", "Band steering of the WLAN", "The WLAN's own band steering settings."},
    {"bandsteering.mode", "Steering mode",
     "The controller's code for the way in which clients are steered."},
    {"bandsteering.percent_en", "Steer by share",
     "1 steers by the share of the clients on a band, 0 does not."},
    {"bandsteering.rssi_en", "Steer by signal",
     "1 steers by the strength of a client's signal, 0 does not."},
    {"bandsteering.rssi", "Signal threshold", "The signal strength in dBm that steering goes by."},
    {"bandsteering.percent", "Share threshold",
     "The share of the clients, in percent, that steering goes by."},
    {"wtp_cfg.fasthandover", "Fast handover of the access point",
     "Lets go of clients whose signal is too weak, so that they join a nearer access point."},
    {"radio[].fasthandover", "Fast handover of the radio",
     "The radio's own fast handover settings."},
    {"fasthandover.status", "Fast handover", "1 turns fast handover on, 0 turns it off."},
    {"fasthandover.rssi", "Signal threshold",
     "The signal strength in dBm below which a client is let go."},
    {"wtp_cfg.guest_network", "Guest network",
     "The addresses of the network from which the access point serves its guests."},
    {"guest_network.addr", "Guest network address",
     "The access point's own address in the guest network."},
    {"guest_network.mask", "Guest network mask", "The mask of the guest network."},
    {"guest_network.start", "First guest address",
     "The first address that guests are given by DHCP."},
    {"guest_network.end", "Last guest address", "The last address that guests are given by DHCP."},
    {"guest_network.wins", "WINS server",
     "The WINS server that guests are told, 0.0.0.0 for none."},
    {"wtp_cfg.led", "LEDs", "Which of the access point's LEDs may light."},
    {"led.power", "Power LED", "1 lets the power LED light, 0 keeps it dark."},
    {"led.lan", "LAN LED", "1 lets the LED of the LAN port light, 0 keeps it dark."},
    {"led.wlan0", "LED of the first radio",
     "1 lets the LED of the first radio light, 0 keeps it dark."},
    {"led.wlan1", "LED of the second radio",
     "1 lets the LED of the second radio light, 0 keeps it dark."},
    {"led.wlan2", "LED of the third radio",
     "1 lets the LED of the third radio light, 0 keeps it dark."},
    {"led.mesh", "Mesh LED", "1 lets the mesh LED light, 0 keeps it dark."},
    {"wtp_cfg.manage_vlan_id", "Management VLAN",
     "The id of the VLAN in which the access point itself is reached."},
    {"wtp_cfg.timezone", "Time zone",
     "The offset of local time from UTC in minutes: 60 is UTC+1, -300 is UTC-5."},
    {"wtp_cfg.log_remote_en", "Remote logging",
     "1 sends the access point's log to a log server, 0 does not."},
    {"wtp_cfg.log_traffic_en", "Traffic logging",
     "1 also logs the traffic of clients, 0 does not."},
    {"wtp_cfg.log_remote_conf", "Log server",
     "The settings of remote logging, in the controller's own form."},
    {"wtp_cfg.lan_port[]", "LAN ports",
     "The first element is for the access point's first LAN port, and so on."},
    {"lan_port[].en", "Port on", "1 turns the port on, 0 turns it off."},
    {"lan_port[].vid", "Port VLAN", "The id of the port's VLAN."},
    {"lan_port[].vlan_mode", "Port VLAN mode",
     "The controller's code for how the port treats VLAN tags."},
    {"wtp_cfg.mesh", "Mesh of the access point",
     "Mesh links join access points by radio where there is no cable."},
    {"mesh.enable_total", "Mesh of the whole device",
     "1 allows mesh links on the access point, 0 turns them all off."},

    // Radios
    {"wtp_cfg.radio[]", "Radios",
     "The first element is for the access point's first radio, and so on."},
    {"radio[].op_mode", "Operation mode", "The controller's code for the radio's role."},
    {"radio[].wl_mode", "Wireless mode",
     "The controller's code for the 802.11 standards that the radio serves."},
    {"radio[].country", "Country", "The controller's code of the country whose radio rules apply."},
    {"radio[].channel", "Channel", "The channel on which the radio works, and its width."},
    {"channel.ht", "Channel width", "The controller's code for the width of the channel."},
    {"channel.ext", "Extension channel",
     "The controller's code for the place of the extension channel when the channel is a wide "
     "one."},
    {"channel.val", "Channel number", "The channel, as the controller numbers it."},
    {"radio[].limited_clients", "Client limit", "How many clients the radio takes at a time."},
    {"limited_clients.enable", "Limit on", "1 limits the number of clients, 0 does not."},
    {"limited_clients.count", "Clients at most",
     "The number of clients that the radio takes at a time when the limit is on."},
    {"radio[].tx_power", "Transmit power",
     "The power with which the radio transmits, in the controller's unit."},
    {"radio[].obey_regulatory_power", "Regulatory power limit",
     "1 keeps the transmit power within the limit of the country, 0 does not."},
    {"radio[].data_rate", "Data rate",
     "The rate at which the radio transmits: auto, an 802.11n rate as MCS7, an 802.11ac rate as "
     "VHTMCS9, or a rate in Mbit/s as 11M or 5.5M."},
    {"radio[].bit_rate", "Bit rate", "The controller's code of a bit rate."},
    {"radio[].ax_enable", "802.11ax", "1 turns 802.11ax on, 0 turns it off."},
    {"radio[].rts_cts_threshold", "RTS threshold",
     "Frames longer than this number of bytes are announced by RTS and CTS; 2346 is longer than "
     "any frame and thus turns this off."},
    {"radio[].aggregation", "Aggregation",
     "Sends several frames as one (A-MPDU), which saves air time."},
    {"aggregation.enable", "Aggregation on", "1 turns aggregation on, 0 turns it off."},
    {"aggregation.frames", "Frames at most", "The number of frames that are sent as one."},
    {"aggregation.maxbytes", "Bytes at most", "The number of bytes that are sent as one."},
    {"radio[].distance", "Distance",
     "How far away the radio's farthest peer is, in the controller's unit; the time for which the "
     "radio waits for an acknowledgement follows from it."},
    {"radio[].mesh", "Mesh of the radio", "The radio's mesh links to other access points."},
    {"mesh.enable", "Mesh on", "1 turns mesh links on for the radio, 0 turns them off."},
    {"mesh.id", "Mesh id", "The name of the mesh. Access points with the same id form one."},
    {"mesh.wpa_key", "Mesh key",
     "The WPA key of the mesh links, the same on all access points of the mesh."},
    {"mesh.link_robust_threshold", "Link threshold",
     "The signal strength in dBm from which a mesh link counts as robust."},

    // Portals, of radios and of WLANs
    {"radio[].portal", "Captive portal of the radio",
     "The page on which the radio's clients log in before they reach the network."},
    {"wlan[].portal", "Captive portal of the WLAN",
     "The page on which the WLAN's clients log in before they reach the network."},
    {"portal.enable", "Portal on", "1 turns the portal on, 0 turns it off."},
    {"portal.login_type", "Login type",
     "The controller's code for the way in which clients log in."},
    {"portal.radius_server", "RADIUS server", "The RADIUS server that checks logins."},
    {"portal.userurl", "Page after login",
     "The address of the page to which clients are sent after login."},
    {"portal.walled_garden", "Walled garden", "Pages that clients may visit without login."},
    {"walled_garden.enable", "Walled garden on", "1 opens the walled garden, 0 closes it."},
    {"walled_garden.pages", "Pages of the walled garden",
     "The list of the pages, in the controller's own form."},
    {"portal.radius_port", "RADIUS port", "The UDP port of the RADIUS server, 1812 as a rule."},
    {"portal.radius_secret", "RADIUS secret", "The secret that is shared with the RADIUS server."},
    {"portal.session_timeout", "Session limit",
     "How long after its login a client has to log in again, in the controller's unit."},
    {"portal.session_timeout_enable", "Session limit on",
     "1 limits the time of a session, 0 does not."},
    {"portal.idle_timeout", "Idle limit",
     "How long a client may send nothing before it has to log in again, in the controller's unit."},
    {"portal.idle_timeout_enable", "Idle limit on",
     "1 ends the session of an idle client, 0 does not."},
    {"portal.accounting_enable", "Accounting",
     "1 reports sessions to the accounting server, 0 does not."},
    {"portal.accounting_time", "Accounting interval",
     "The time between two interim reports to the accounting server, in the controller's unit."},
    {"portal.auth_type", "Authentication type",
     "The controller's code of the authentication method."},
    {"portal.external_server", "External portal", "The address of a login page on another server."},
    {"portal.external_secret", "External portal's secret",
     "The secret that is shared with the external portal."},
    {"portal.account_server", "Accounting server", "The RADIUS server that is told of sessions."},
    {"portal.accounting_port", "Accounting port",
     "The UDP port of the accounting server, 1813 as a rule."},
    {"portal.accounting_secret", "Accounting secret",
     "The secret that is shared with the accounting server."},
    {"portal.uamformat", "Login address",
     "The form of the address by which clients reach the login page, as the controller defines "
     "it."},
    {"portal.local_auth", "Local users",
     "The users that the access point checks itself, in the controller's own form."},
    {"portal.port", "Portal port", "The TCP port of the login page."},
    {"portal.https_enable", "HTTPS", "1 serves the login page by HTTPS, 0 by HTTP."},
    {"portal.radius_secret2", "Second RADIUS secret",
     "The secret that is shared with the second RADIUS server."},
    {"portal.radius_server2", "Second RADIUS server",
     "The RADIUS server that is asked when the first one fails."},
    {"portal.network_type", "Network type",
     "The controller's code for the network that clients of the portal reach."},

    // WLANs
    {"radio[].wlan[]", "WLANs", "The first element is for the radio's first WLAN, and so on."},
    {"wlan[].enable", "WLAN on", "1 turns the WLAN on, 0 turns it off."},
    {"wlan[].ssid", "Network name", "The SSID under which clients find the WLAN."},
    {"wlan[].supr_ssid", "Hidden name",
     "1 leaves the SSID out of beacons, so that clients must know it, 0 shows it."},
    {"wlan[].sta_sep", "Client separation",
     "1 keeps the clients of the WLAN from reaching each other, 0 does not."},
    {"wlan[].layer2Isolation", "Layer 2 isolation",
     "1 lets clients reach only the devices whose MAC addresses are listed, 0 lets them reach "
     "all."},
    {"wlan[].l2macWlist[]", "Devices within reach",
     "The MAC addresses that clients can reach in spite of layer 2 isolation. An empty list stands "
     "for none."},
    {"wlan[].isolation", "WLAN isolation",
     "1 isolates the WLAN from the access point's other networks, 0 does not."},
    {"wlan[].vlan", "VLAN", "The id of the VLAN into which the traffic of the WLAN goes."},
    {"wlan[].acl", "Access list", "Which clients may join, by MAC address."},
    {"acl.mode", "Access list mode",
     "The controller's code for what the list is: not used, those who may join, or those who may "
     "not."},
    {"acl.mac[]", "Listed clients",
     "The MAC addresses of the access list. An empty list stands for none."},
    {"wlan[].downloadlimit", "Download limit",
     "The rate limit towards clients; its unit and the meaning of -1 are the controller's."},
    {"wlan[].uploadlimit", "Upload limit",
     "The rate limit of what clients send; its unit and the meaning of -1 are the controller's."},
    {"wlan[].downperuser_en", "Download limit for each client",
     "1 applies the download limit to each client, 0 to the WLAN as a whole."},
    {"wlan[].uploadperuser_en", "Upload limit for each client",
     "1 applies the upload limit to each client, 0 to the WLAN as a whole."},
    {"wlan[].downloadMode", "Download limit mode",
     "The controller's code for how the download limit is applied."},
    {"wlan[].uploadMode", "Upload limit mode",
     "The controller's code for how the upload limit is applied."},
    {"wlan[].roaming", "Roaming",
     "Lets clients change to another access point without a full login."},
    {"roaming.enable", "Fast roaming", "1 turns fast roaming on, 0 turns it off."},
    {"roaming.adv_search", "Advanced search",
     "1 turns the advanced search for neighbours on, 0 turns it off."},
    {"wlan[].sec_mode", "Security mode",
     "The controller's code of the security mode. JSON reports show the WEP settings for mode 1, "
     "the WPA settings for 2 to 12, and WPA's RADIUS server for 5, 6, 7, 11 and 12."},
    {"wlan[].wep", "WEP",
     "Settings of an old and unsafe way to encrypt, for devices that know no other."},
    {"wep.auth_type", "Authentication type",
     "The controller's code for open or shared key authentication."},
    {"wep.in_type", "Input type",
     "The controller's code for how the keys are written, as text or as hexadecimal digits."},
    {"wep.key_len", "Key length", "The controller's code for the length of the keys."},
    {"wep.def_key", "Default key", "Which of the four keys is used to send, counted from 0."},
    {"wep.key[]", "Keys",
     "The WEP keys, four of them; their form follows from input type and length."},
    {"wlan[].wpa", "WPA", "Settings of WPA, WPA2 and WPA3."},
    {"wpa.enc_mode", "Encryption", "The controller's code of the cipher."},
    {"wpa.suiteb_en", "Suite B",
     "1 turns the 192-bit security of WPA3-Enterprise on, 0 turns it off."},
    {"wpa.pmf_enable", "Protected management frames",
     "1 protects management frames (802.11w), 0 does not."},
    {"wpa.passphrase", "Passphrase",
     "The passphrase of a personal WLAN: 8 to 63 characters, or the key itself as 64 hexadecimal "
     "digits."},
    {"wpa.group_key_int", "Group key interval",
     "The time after which the key for broadcasts is changed, in seconds."},
    {"wpa.radius", "RADIUS", "The server that checks the clients of an enterprise WLAN (802.1X)."},
    {"radius.addr", "RADIUS server", "The address of the RADIUS server."},
    {"radius.port", "RADIUS port", "The UDP port of the RADIUS server, 1812 as a rule."},
    {"radius.secret", "RADIUS secret", "The secret that is shared with the RADIUS server."},
    {"wlan[].acc", "Accounting", "The server that is told of the sessions of an enterprise WLAN."},
    {"acc.enable", "Accounting on", "1 reports sessions to the accounting server, 0 does not."},
    {"acc.addr", "Accounting server", "The address of the RADIUS accounting server."},
    {"acc.port", "Accounting port", "The UDP port of the accounting server, 1813 as a rule."},
    {"acc.secret", "Accounting secret", "The secret that is shared with the accounting server."},
    {"acc.interval", "Accounting interval",
     "The time between two interim reports to the accounting server, in seconds."},
    {"wlan[].nas", "NAS attributes",
     "How the access point names itself in requests to RADIUS servers."},
    {"nas.id_enable", "Send NAS-Identifier", "1 sends the id, 0 does not."},
    {"nas.id", "NAS-Identifier", "The name by which RADIUS servers know the access point."},
    {"nas.ip_enable", "Send NAS-IP-Address", "1 sends the address, 0 does not."},
    {"nas.ip", "NAS-IP-Address", "The address by which RADIUS servers know the access point."},
    {"nas.port_enable", "Send NAS-Port", "1 sends the port, 0 does not."},
    {"nas.port", "NAS-Port", "The port number by which RADIUS servers know the WLAN."},
    {"wlan[].hotspot20", "Hotspot 2.0",
     "The settings of Hotspot 2.0 (Passpoint): a JSON document of the controller's own form, "
     "written as a string."},

    // Switches
    {"wtp_cfg.redundancyMode", "Redundancy mode", "The controller's code of the redundancy mode."},
    {"wtp_cfg.manage_mac_list[]", "Management stations",
     "The MAC addresses that may administer the switch. An empty list stands for none."},
    {"wtp_cfg.switch_port[]", "Ports",
     "One element for each port that is to be set; each names its port."},
    {"switch_port[].port", "Port number", "The port to which the element's other settings belong."},
    {"switch_port[].mode", "Speed mode", "The controller's code of speed and duplex mode."},
    {"switch_port[].flow_control", "Flow control", "1 turns flow control on, 0 turns it off."},
    {"switch_port[].descp", "Port description", "A text of your own: what the port is for."},
    {"wtp_cfg.power_budget", "Power budget",
     "The power that all PoE ports together may draw, in watts."},
    {"wtp_cfg.poe_port[]", "PoE ports",
     "One element for each PoE port that is to be set; each names its port."},
    {"poe_port[].port", "Port number", "The port to which the element's other settings belong."},
    {"poe_port[].enable", "Power on", "1 gives power to the port, 0 does not."},
    {"poe_port[].priority", "Power priority",
     "The controller's code of the port's priority; ports of low priority lose their power first "
     "when the budget is exceeded."},
    {"poe_port[].power_limit_type", "Power limit type",
     "The controller's code for what limits the port's power: the class of the powered device or "
     "user_power_limit."},
    {"poe_port[].user_power_limit", "Power limit",
     "The power that the port may draw, in the controller's unit."},
    {"wtp_cfg.pdl_enable", "PD lifeguard",
     "1 watches powered devices and restarts those that hang, 0 does not."},
    {"wtp_cfg.pd_lifeguard[]", "PD lifeguard rules",
     "One element for each port whose powered device is watched; each names its port."},
    {"pd_lifeguard[].port", "Port number",
     "The port to which the element's other settings belong."},
    {"pd_lifeguard[].enable", "Watch on", "1 watches the port's powered device, 0 does not."},
    {"pd_lifeguard[].mode", "Watch mode",
     "The controller's code for how the powered device is watched."},
    {"pd_lifeguard[].action", "Action",
     "The controller's code for what is done when the powered device does not answer."},
    {"pd_lifeguard[].specified_ip", "Watched address", "The address that is pinged."},
    {"pd_lifeguard[].ping_interval", "Ping interval", "The time between two pings, in seconds."},
    {"pd_lifeguard[].ping_max_count", "Pings at most",
     "How many pings in a row may stay without answer."},
    {"pd_lifeguard[].power_recovery_interval", "Time without power",
     "How long the port stays without power when the powered device is restarted, in seconds."},
    {"pd_lifeguard[].reboot_max_retry_count", "Restarts at most",
     "How many times the powered device is restarted before the switch gives up."},
    {"pd_lifeguard[].reboot_count", "Restarts so far",
     "How many times the powered device has been restarted."},
    {"pd_lifeguard[].pd_bootup_time", "Start time",
     "How long the powered device takes to start, in seconds; it is not watched meanwhile."},
    {"pd_lifeguard[].clear_reboot_count", "Clear restarts",
     "1 sets the number of restarts back to 0."},
    {"pd_lifeguard[].status", "Watch status",
     "The state of the watch in words, as reports show it."},
    {"wtp_cfg.pdl_status[]", "PD lifeguard status",
     "The state of the watch on each port, in the form in which reports show it."},
    {"pdl_status[].port", "Port number", "The port to which the element's other values belong."},
    {"pdl_status[].state", "State",
     "1 or 0, the controller's code for the state of the powered device."},
    {"pdl_status[].mode", "Watch mode",
     "The controller's code for how the powered device is watched."},
    {"pdl_status[].polling_method", "Polling method",
     "The controller's code for how the powered device is asked."},
    {"pdl_status[].mac", "MAC address", "The MAC address of the powered device."},
    {"pdl_status[].management_ip", "Management address",
     "The address at which the powered device is administered."},
    {"pdl_status[].action", "Action", "What was done, in words."},
    {},
};

constexpr const char MANUAL_HEAD[] = R"(.\" SPDX-License-Identifier: MIT
.Dd November 24, 2026
.Dt ZOV-CFG 5
.Os
.Sh NAME
.Nm zov-cfg
.Nd configuration files for access points and switches
.Sh DESCRIPTION
The command
.Ql zov cfg \-\-mac MAC \-\-file FILE
sends the settings in a configuration file to devices by way of the controller.
The file is a JSON document whose settings are members of the top-level object
.Va wtp_cfg .
Files for switches are sent with
.Ql \-\-type 1
and know other settings than those for access points.
.Pp
Settings are named here by their paths, as in
.Nm zov Ns 's
messages: member names joined by dots, with
.Ql []
behind the name of an array.
.Ss Arrays
The elements of
.Va radio[] ,
.Va wlan[]
and
.Va lan_port[]
belong to the device's radios, WLANs and LAN ports by their positions: the first element
of
.Va radio[]
is for the first radio, and its first element of
.Va wlan[]
for the first WLAN of that radio.
An element that is only there to keep the position of the following ones needs a member as well,
for instance
.Ql {\(dqcomment\(dq: \(dqunchanged\(dq} .
.Pp
The elements of the arrays for a switch's ports name their port in a member
.Va port .
.Pp
A list of names or addresses, such as
.Va ac_list[] ,
is one setting and is sent as a whole.
.Pp
An array has at most 256 elements.
Their number is sent as well; what becomes of the elements that a file leaves out is the
controller's affair.
.Ss Checks
All values of all files are checked before anything is sent.
The first value that is refused is reported with its path, ends the run with status 1, and no
device is sent anything.
A value is refused when it is of another type, out of range, too long, or not of the form that
its entry tells.
Besides:
.Bl -bullet -compact
.It
Switches are the numbers 1 and 0;
.Ql true
and
.Ql false
are refused.
.It
Numbers are written without fraction and exponent.
.It
The length of a text is counted in bytes, and letters other than ASCII take two to four each.
.It
An object without members is refused, anywhere in the file and without a message.
.It
Members that have no entry below are skipped, settings of the other kind of device among them.
A misspelt name thus goes unnoticed; the schemas do not report it either.
.El
.Pp
An empty file is accepted and sends no settings.
.Ss Codes
Where an entry speaks of the controller's code, the meaning of the numbers is the controller's.
The safe way to a code is to look at a device that is set up as wanted:
.Ql zov wtps \-\-json \-\-mac MAC
prints most settings under the names that are used here.
)";

constexpr const char MANUAL_TAIL[] = R"(.Sh FILES
.Bl -tag -width Ds -compact
.It Pa share/zov/wtp_cfg-ap.schema.json
.It Pa share/zov/wtp_cfg-switch.schema.json
JSON Schemas (draft 2020-12) of the two kinds of files, below the directory that
.Nm zov
is installed in.
A file that names its schema in a top-level member
.Va $schema
is checked and completed by many editors.
.It Pa share/doc/zov/examples
Complete files.
.El
.Sh EXAMPLES
Name an access point, give it a fixed address, and open a WLAN on its first radio:
.Bd -literal -offset indent
{
  "wtp_cfg": {
    "name": "AP Reception",
    "ipv4": "192.168.1.10/255.255.255.0/192.168.1.1",
    "dns1": "192.168.1.1",
    "radio": [
      {
        "wlan": [
          {
            "enable": 1,
            "ssid": "Office",
            "vlan": 10
          }
        ]
      }
    ]
  }
}
.Ed
.Pp
.Dl $ zov cfg \-\-mac 00:11:22:33:44:55 \-\-file reception.json
.Pp
Change the transmit power of the second radio only:
.Bd -literal -offset indent
{
  "wtp_cfg": {
    "radio": [
      { "comment": "unchanged" },
      { "tx_power": 17 }
    ]
  }
}
.Ed
.Pp
Turn the power of a switch's port 8 off:
.Bd -literal -offset indent
{
  "wtp_cfg": {
    "poe_port": [
      { "port": 8, "enable": 0 }
    ]
  }
}
.Ed
.Pp
.Dl $ zov cfg \-\-mac 00:11:22:33:44:66 \-\-type 1 \-\-file port8-off.json
.Sh SEE ALSO
.Xr zov 8
)";
