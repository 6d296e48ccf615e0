// SPDX-License-Identifier: MIT
// The settings that configuration files can hold: one row each, a table for each kind of device.
//
// A path names members from the top of the file, joined by dots; [] stands for any element of an
// array. The item ids are a contract with the controller; the same path can have different ids in
// the two tables.
#pragma once

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

struct ConfigKey {
    int32_t id = 0;
    json_type kind = json_none; // json_integer or json_string
    int32_t min = 0;            // smallest value, or smallest length in bytes
    int32_t max = 0;            // largest value, or largest length; -1 as a length: no limit
    ConfigForm form = FORM_U32;
    std::string_view path; // empty in the row that ends a table
};

// An array that makes an item of its own: its number of elements, as 32 bits.
struct ConfigArray {
    std::string_view path;
    int32_t id = 0;
};

// An array that makes one item of all its elements, and an empty item when it has none.
struct ConfigList {
    std::string_view path;
    int32_t switch_id = 0;
    int32_t access_point_id = 0; // or NOT_SUPPORTED
    uint32_t element_size = 0;   // bytes

    enum : int32_t { NOT_SUPPORTED = 0 };
};

// The device kind byte of a configuration request.
enum DeviceKind : uint8_t { DEVICE_SWITCH = 2, DEVICE_ACCESS_POINT = 3 };

// Each ends with an empty row.
extern const ConfigKey SWITCH_KEYS[];
extern const ConfigKey ACCESS_POINT_KEYS[];
extern const ConfigArray CONFIG_ARRAYS[];
extern const ConfigList CONFIG_LISTS[];

inline const ConfigKey *config_keys(DeviceKind kind)
{
    return kind == DEVICE_SWITCH ? SWITCH_KEYS : ACCESS_POINT_KEYS;
}

// The row of a path, or null.
const ConfigKey *config_key_find(const ConfigKey *table, std::string_view path);
bool config_keys_below(const ConfigKey *table, std::string_view path); // any path that starts so
const ConfigArray *config_array_find(std::string_view path);
const ConfigList *config_list_find(std::string_view path);
