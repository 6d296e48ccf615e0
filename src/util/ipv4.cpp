// SPDX-License-Identifier: MIT
#include "util/ipv4.h"

#include <cstdio>

#define QUAD "%u.%u.%u.%u"

// Stores four numbers as an address; false when one is above 255.
static bool to_ipv4(const unsigned part[4], Ipv4 &addr)
{
    for (int i = 0; i < 4; i++) {
        if (part[i] > 255)
            return false;
        addr.octet[i] = static_cast<uint8_t>(part[i]);
    }
    return true;
}

static uint32_t host_order(Ipv4 addr)
{
    return uint32_t{addr.octet[0]} << 24 | uint32_t{addr.octet[1]} << 16 |
           uint32_t{addr.octet[2]} << 8 | addr.octet[3];
}

static bool is_broadcast(Ipv4 addr)
{
    return host_order(addr) == 0xFFFFFFFF;
}

static bool is_contiguous(Ipv4 mask)
{
    const uint32_t host = ~host_order(mask);
    return (host & (host + 1)) == 0;
}

// A first octet that a unicast address can have: not loopback, multicast or broadcast.
static bool has_unicast_start(Ipv4 addr)
{
    const uint8_t first = addr.octet[0];
    return first != 127 && first != 255 && !(first >= 224 && first <= 239) &&
           !(first == 191 && addr.octet[1] == 255);
}

// Neither the network's own address nor its broadcast address.
static bool has_host_part(Ipv4 addr, Ipv4 mask)
{
    const uint32_t host_bits = ~host_order(mask);
    const uint32_t host = host_order(addr) & host_bits;
    return host != 0 && host != host_bits;
}

static bool is_usable_server(Ipv4 addr, Ipv4 mask)
{
    return addr.is_zero() || (has_unicast_start(addr) && has_host_part(addr, mask));
}

static bool is_usable_setting(Ipv4 ip, Ipv4 mask, Ipv4 gateway)
{
    if (is_broadcast(ip) || mask.is_zero() || is_broadcast(mask) || !is_contiguous(mask))
        return false;
    if (ip.octet[0] == 0 || !has_unicast_start(ip) || !has_host_part(ip, mask))
        return false;
    return is_usable_server(gateway, mask) &&
           (gateway.is_zero() || ((host_order(ip) ^ host_order(gateway)) & host_order(mask)) == 0);
}

bool parse_ipv4(const char *text, Ipv4 &addr)
{
    unsigned part[4];
    return sscanf(text, QUAD, &part[0], &part[1], &part[2], &part[3]) == 4 && to_ipv4(part, addr);
}

bool parse_ip_settings(const char *text, Ipv4 &ip, Ipv4 &mask, Ipv4 &gateway)
{
    unsigned p[12];
    if (sscanf(text, QUAD "/" QUAD "/" QUAD, &p[0], &p[1], &p[2], &p[3], &p[4], &p[5], &p[6], &p[7],
               &p[8], &p[9], &p[10], &p[11]) != 12)
        return false;
    if (!to_ipv4(p, ip) || !to_ipv4(p + 4, mask) || !to_ipv4(p + 8, gateway))
        return false;
    if (ip.is_zero())
        return mask.is_zero() && gateway.is_zero();
    return is_usable_setting(ip, mask, gateway);
}

bool parse_ip_dns_settings(const char *text, Ipv4 &ip, Ipv4 &mask, Ipv4 &gateway, Ipv4 &dns1,
                           Ipv4 &dns2)
{
    unsigned p[20] = {};
    const int count = sscanf(text, QUAD "/" QUAD "/" QUAD "/" QUAD "/" QUAD, &p[0], &p[1], &p[2],
                             &p[3], &p[4], &p[5], &p[6], &p[7], &p[8], &p[9], &p[10], &p[11],
                             &p[12], &p[13], &p[14], &p[15], &p[16], &p[17], &p[18], &p[19]);
    if (count < 4 || count % 4 != 0)
        return false;
    if (!to_ipv4(p, ip) || !to_ipv4(p + 4, mask) || !to_ipv4(p + 8, gateway) ||
        !to_ipv4(p + 12, dns1) || !to_ipv4(p + 16, dns2))
        return false;
    if (ip.is_zero())
        return mask.is_zero() && gateway.is_zero() && dns1.is_zero() && dns2.is_zero();
    return is_usable_setting(ip, mask, gateway) && is_usable_server(dns1, mask) &&
           is_usable_server(dns2, mask);
}
