// SPDX-License-Identifier: MIT
// IPv4 addresses (RFC 791) and the static address settings that are written with slashes.
#pragma once

#include "util/number.h"

#include <compare>
#include <cstdint>

// One address, in the order of its text and of the wire (network byte order).
struct Ipv4 {
    uint8_t octet[4] = {};

    bool is_zero() const { return (octet[0] | octet[1] | octet[2] | octet[3]) == 0; }
    auto operator<=>(const Ipv4 &) const = default;
};

// Reads four decimal numbers joined by dots, each as scanf's %u reads it and at most 255; text
// after the fourth is ignored. False when the text is no such address.
bool parse_ipv4(const char *text, Ipv4 &addr);

// Reads IP/MASK/GW and checks it as a usable static setting: a contiguous mask that leaves the
// address a host part, a unicast address, a gateway (if not 0.0.0.0) in the address's subnet. All
// three 0.0.0.0 is accepted and means that there is no static setting. False otherwise.
bool parse_ip_settings(const char *text, Ipv4 &ip, Ipv4 &mask, Ipv4 &gateway);

// Reads IP/MSK/GW/DNS1/DNS2 with the same checks; name servers need not be in the subnet. Trailing
// quads may be left out and are 0.0.0.0; 0.0.0.0 alone means that there is no static setting.
bool parse_ip_dns_settings(const char *text, Ipv4 &ip, Ipv4 &mask, Ipv4 &gateway, Ipv4 &dns1,
                           Ipv4 &dns2);

enum : unsigned { IPV4_TEXT_MAX = 16 }; // one more than the longest text, see write_number

// Writes "192.168.1.10" into IPV4_TEXT_MAX bytes, unterminated, and returns the text's end.
inline char *write_ipv4(char *to, Ipv4 addr)
{
    to = write_number(to, addr.octet[0]);
    for (int i = 1; i < 4; i++) {
        *to++ = '.';
        to = write_number(to, addr.octet[i]);
    }
    return to;
}
