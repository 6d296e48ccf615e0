// SPDX-License-Identifier: MIT
// Checks the values of a configuration file against the key table and encodes them into items.
#pragma once

#include "config/config_keys.h"
#include "config/tlv_buffer.h"
#include "util/table.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

// The positions of the arrays on the way to a value, outermost first.
using IndexKey = std::span<const uint8_t>;

// Its functions return 0 when the value was taken or skipped, 1 when it was refused and the message
// printed.
class ConfigValueHandler {
public:
    ConfigValueHandler(DeviceKind kind, TlvBuffer &items) : kind_(kind), items_(items) {}

    // Before the elements of an array. `key` ends with a byte for the array itself.
    int take_array(std::string_view path, IndexKey key, uint32_t length);

    // Any value that is neither array nor object; one whose path has no row is skipped.
    int take_scalar(std::string_view path, IndexKey key, const json_value &value);

private:
    int take_integer(const ConfigKey &row, IndexKey key, int64_t number);
    int take_string(const ConfigKey &row, IndexKey key, const char *text, uint32_t length);
    int take_text(const ConfigKey &row, IndexKey key, const char *text);
    int take_ip_settings(const ConfigKey &row, IndexKey key, const char *text);
    int take_data_rate(const ConfigKey &row, IndexKey key, const char *text);
    int take_password(const ConfigKey &row, IndexKey key, const char *text);
    int take_mac(const ConfigKey &row, IndexKey key, const char *text);
    int take_host(const ConfigKey &row, IndexKey key, const char *text, uint32_t length);

    int start_list(const ConfigList &list, IndexKey key, uint32_t length);
    int finish_element(const ConfigKey &row, IndexKey key, const char *what);
    int append_u32(int32_t id, IndexKey key, uint32_t number);
    int append(const ConfigKey &row, IndexKey key, const void *value, size_t length);
    uint8_t *element(const ConfigKey &row, IndexKey key);

    DeviceKind kind_;
    TlvBuffer &items_;

    // The list whose elements are being collected. One at a time is enough: a list's path is never
    // below another's, and a list that was left unfinished starts anew with its next array.
    const ConfigList *list_ = nullptr;
    uint32_t list_length_ = 0;
    Table<uint8_t> list_bytes_;
};
