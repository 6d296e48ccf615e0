// SPDX-License-Identifier: MIT
#include "util/mac.h"

#include "util/index_set.h"
#include "util/text.h"

#include <cstdio>
#include <cstring>

bool parse_mac(const char *text, Mac &mac)
{
    unsigned part[6];
    if (sscanf(text, "%x:%x:%x:%x:%x:%x", &part[0], &part[1], &part[2], &part[3], &part[4],
               &part[5]) != 6)
        return false;
    unsigned any = 0;
    for (int i = 0; i < 6; i++) {
        if (part[i] > 0xFF)
            return false;
        mac.byte[i] = static_cast<uint8_t>(part[i]);
        any |= part[i];
    }
    return any != 0;
}

static uint64_t hash_mac(const Mac &mac)
{
    uint64_t bits = 0;
    memcpy(&bits, mac.byte, sizeof mac.byte);
    return hash_bits(bits);
}

static bool append_unique_macs(char *text, MacList &list)
{
    size_t items = 1;
    for (const char *p = text; (p = strchr(p, ',')) != nullptr; p++)
        items++;
    IndexSet seen;
    if (!list.reserve(items) || !seen.reserve(items))
        return false;
    char *rest = text;
    while (char *item = strsep(&rest, ",")) {
        if (*item == '\0')
            continue;
        Mac mac;
        if (!parse_mac(item, mac) || mac.is_group())
            return false;
        if (seen.insert(hash_mac(mac), list.size(), [&](uint32_t i) { return list[i] == mac; }) ==
            list.size())
            list.append() = mac;
    }
    return true;
}

bool parse_mac_list(const char *text, MacList &list)
{
    list.clear();
    Text copy;
    const bool parsed = copy.assign(text) && append_unique_macs(copy.data(), list);
    if (!parsed)
        list.clear();
    return parsed;
}

static char *write_mac(char *to, const Mac &mac, const char *digits)
{
    for (int i = 0; i < 6; i++) {
        if (i > 0)
            *to++ = ':';
        *to++ = digits[mac.byte[i] >> 4];
        *to++ = digits[mac.byte[i] & 15];
    }
    return to;
}

char *write_mac(char *to, const Mac &mac)
{
    return write_mac(to, mac, "0123456789ABCDEF");
}

char *write_mac_lower(char *to, const Mac &mac)
{
    return write_mac(to, mac, "0123456789abcdef");
}

const char *mac_to_text(const Mac &mac)
{
    static char text[MAC_TEXT_MAX + 1];
    *write_mac(text, mac) = '\0';
    return text;
}
