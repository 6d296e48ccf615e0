// SPDX-License-Identifier: MIT
// Addresses and digests as texts of their own.
#pragma once

#include "report/format.h"
#include "util/ipv4.h"
#include "util/mac.h"

#include <string>

inline std::string mac_name(const Mac &mac)
{
    char text[MAC_TEXT_MAX];
    return {text, write_mac(text, mac)};
}

inline std::string ipv4_name(Ipv4 addr)
{
    char text[IPV4_TEXT_MAX];
    return {text, write_ipv4(text, addr)};
}

inline std::string digest_name(const Md5Digest &digest)
{
    char text[DIGEST_TEXT_MAX];
    return {text, write_digest(text, digest)};
}
