// SPDX-License-Identifier: MIT
#include "documents/value_json.h"

#include "common/address_text.h"
#include "common/utf8.h"
#include "config/config_value.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

using std::string;
using std::string_view;

static string limits_text(const string &given, int64_t least, int64_t most)
{
    return given + ", " + std::to_string(least) + " to " + std::to_string(most) + " can be sent";
}

// Why a text cannot be sent; empty when it can.
static string why_unsendable(const ConfigKey &key, string_view text)
{
    const auto size = static_cast<uint32_t>(text.size());
    if (size < static_cast<uint32_t>(key.min) || size > static_cast<uint32_t>(key.max))
        return limits_text(std::to_string(size) + " bytes", key.min, key.max);
    return is_utf8(text) ? "" : "is no UTF-8, which JSON cannot hold";
}

static ValueJson text_json(const ConfigKey &key, string_view text)
{
    string why = why_unsendable(key, text);
    return why.empty() ? ValueJson{text, ""} : ValueJson{{}, std::move(why)};
}

// Big-endian, and signed where the setting can be negative.
static int64_t number_of(const ConfigKey &key, string_view bytes)
{
    uint32_t bits = 0;
    for (const char byte : bytes)
        bits = bits << 8 | static_cast<uint8_t>(byte);
    if (key.min >= 0 && key.form != FORM_DATA_RATE)
        return bits;
    const size_t unused = 8 * (sizeof bits - bytes.size());
    return static_cast<int32_t>(bits << unused) >> unused;
}

static ValueJson number_json(const ConfigKey &key, int64_t number)
{
    if (number < key.min || number > key.max)
        return {{}, limits_text(std::to_string(number), key.min, key.max)};
    return {number, ""};
}

static ValueJson rate_json(const ConfigKey &key, int64_t code)
{
    const char *text = data_rate_text(static_cast<int32_t>(code));
    int read = 0;
    if (why_unsendable(key, text).empty() && parse_data_rate(text, read) && read == code)
        return {text, ""};
    return {{}, "no text stands for code " + std::to_string(code)};
}

static string ipv4_text(string_view bytes)
{
    Ipv4 addr;
    memcpy(addr.octet, bytes.data(), sizeof addr.octet);
    return ipv4_name(addr);
}

static ValueJson ip_settings_json(const ConfigKey &key, string_view bytes)
{
    string joined;
    for (size_t at = 0; at < bytes.size(); at += sizeof(Ipv4))
        joined += (at == 0 ? "" : "/") + ipv4_text(bytes.substr(at));
    Ipv4 ip, mask, gateway;
    if (!parse_ip_settings(joined.c_str(), ip, mask, gateway))
        return {{}, joined + " is no address that a device can have"};
    return text_json(key, joined);
}

static bool has_equal(std::vector<string> texts)
{
    std::sort(texts.begin(), texts.end());
    return std::adjacent_find(texts.begin(), texts.end()) != texts.end();
}

// A list that is one setting: all of it is sent, or nothing.
static ValueJson list_json(const ConfigKey &key, DeviceKind kind, string_view bytes)
{
    const size_t size = key.element_size(), count = bytes.size() / size;
    if (count > key.elements_max())
        return {{},
                std::to_string(count) + " elements, " + std::to_string(key.elements_max()) +
                    " can be sent"};
    std::vector<string> texts;
    string why;
    for (size_t at = 0; at < bytes.size(); at += size) {
        const string_view element = bytes.substr(at, size);
        if (key.form == FORM_HOST_LIST) {
            texts.emplace_back(element.substr(0, element.find('\0')));
        } else {
            Mac mac;
            memcpy(mac.byte, element.data(), sizeof mac.byte);
            texts.push_back(mac_name(mac));
            if (why.empty() && (mac.is_group() || !parse_mac(texts.back().c_str(), mac)))
                why = texts.back() + " is no device's address";
        }
        if (why.empty())
            why = why_unsendable(key, texts.back());
    }
    if (key.has_distinct_elements(kind) && has_equal(texts))
        why = "has an element twice";
    return why.empty() ? ValueJson{texts, ""} : ValueJson{{}, why};
}

ValueJson value_json(const ConfigKey &key, DeviceKind kind, string_view bytes)
{
    switch (key.form) {
    case FORM_U32:
    case FORM_U16:
        return number_json(key, number_of(key, bytes));
    case FORM_DATA_RATE:
        return rate_json(key, number_of(key, bytes));
    case FORM_TEXT:
        return text_json(key, bytes);
    case FORM_IPV4:
    case FORM_SERVER_ADDRESS:
        return text_json(key, ipv4_text(bytes));
    case FORM_IP_SETTINGS:
        return ip_settings_json(key, bytes);
    case FORM_MAC_LIST:
    case FORM_HOST_LIST:
        return list_json(key, kind, bytes);
    case FORM_PASSWORD_DIGEST:
        break;
    }
    return {};
}
