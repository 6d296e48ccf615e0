// SPDX-License-Identifier: MIT
// The settings that configuration files can hold: a table for each kind of device, made from the
// rows of settings.def.
#pragma once

#include "proto/device_kind.h"

#include <algorithm>
#include <cstdint>
#include <json-parser/json.h>
#include <string_view>

// How a value is encoded.
enum ConfigForm : uint8_t {
    FORM_U32,             // the low 32 bits
    FORM_U16,             // the low 16 bits
    FORM_TEXT,            // the bytes up to the first NUL
    FORM_IPV4,            // four octets; any other text is refused
    FORM_SERVER_ADDRESS,  // four octets, zero for any other text
    FORM_IP_SETTINGS,     // address/mask/gateway, twelve octets
    FORM_MAC_LIST,        // an element of an array that makes one item of six bytes an element
    FORM_HOST_LIST,       // likewise, with a slot of 256 bytes an element
    FORM_PASSWORD_DIGEST, // the MD5 digest of the password and a line feed
    FORM_DATA_RATE,       // the code of a rate text, 32 bits
};

// What tools have to know of a setting; zov itself sends what it is given.
enum ConfigMark : uint8_t {
    MARK_STATE = 1,      // the device changes it by itself
    MARK_UNREADABLE = 2, // no record has it
    MARK_SECRET = 4,     // not to be shown
    MARK_RISKY = 8,      // a bad value cuts the device off
    MARK_CUTS_PORT = 16, // likewise what is connected to a port, or to all of them
    MARK_GROWS = 32,     // of an array: a device can have more elements, or fewer
    MARK_JSON = 64,      // a text that is a JSON document
};

enum : uint32_t {
    CONFIG_ELEMENTS_MAX = 256,      // of any array: what an index byte can tell apart
    CONFIG_VALUE_BYTES_MAX = 65535, // of an item's value
    CONFIG_ITEM_ADDRESS_SETTINGS =
        3, // of the setting ipv4, and of the one item that cfg --add can have
};

struct ConfigKey {
    int32_t id = 0;
    ConfigForm form = FORM_U32;
    uint8_t marks = 0;     // of ConfigMark
    int32_t min = 0;       // smallest value, or smallest length in bytes
    int32_t max = 0;       // largest value, or largest length; -1 as a length: no limit
    std::string_view path; // empty in the row that ends a table

    // The JSON kind that a value must have: json_integer or json_string.
    json_type kind() const
    {
        return form == FORM_U32 || form == FORM_U16 ? json_integer : json_string;
    }

    // Bytes of an element in a list's one item; 0 for settings that are no lists.
    uint32_t element_size() const
    {
        return form == FORM_MAC_LIST ? 6 : form == FORM_HOST_LIST ? 256 : 0;
    }

    // The most elements of an array of such values; the one item of a list has to hold them.
    uint32_t elements_max() const
    {
        return element_size() == 0 ? CONFIG_ELEMENTS_MAX
                                   : std::min<uint32_t>(CONFIG_ELEMENTS_MAX,
                                                        CONFIG_VALUE_BYTES_MAX / element_size());
    }

    // Whether it is a list of which no two elements may be equal.
    bool has_distinct_elements(DeviceKind kind) const
    {
        return form == FORM_MAC_LIST || (form == FORM_HOST_LIST && kind == DEVICE_ACCESS_POINT);
    }
};

// An array that makes an item of its own, for either kind of device: its number of elements, as 32
// bits.
struct ConfigArray {
    int32_t id = 0;
    uint8_t marks = 0;
    std::string_view path; // empty in the row that ends the table
};

// Each ends with an empty row.
extern const ConfigKey SWITCH_KEYS[];
extern const ConfigKey ACCESS_POINT_KEYS[];
extern const ConfigArray CONFIG_ARRAYS[];

inline const ConfigKey *config_keys(DeviceKind kind)
{
    return kind == DEVICE_SWITCH ? SWITCH_KEYS : ACCESS_POINT_KEYS;
}

// The row of a path, or null.
const ConfigKey *config_key_find(const ConfigKey *table, std::string_view path);
const ConfigArray *config_array_find(std::string_view path);

bool config_keys_below(const ConfigKey *table, std::string_view path); // any path that starts so
