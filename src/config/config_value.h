// SPDX-License-Identifier: MIT
// Checks the values of a configuration file against the key table and encodes them into items.
#pragma once

#include "config/config_keys.h"
#include "config/config_walk.h"
#include "config/password_digest.h"
#include "config/tlv_buffer.h"
#include "util/bytes.h"

#include <cstdint>
#include <string_view>

// What the values of one file have in common.
struct ConfigContext {
    ConfigContext(DeviceKind device_kind, TlvBuffer &buffer) : kind(device_kind), items(buffer) {}

    [[nodiscard]] const Messages &messages() const { return items.messages; }

    DeviceKind kind;
    TlvBuffer &items;
    int (*digest)(const char *password, uint8_t digest[16],
                  const Messages &messages) = password_digest;

    // The list whose elements are being collected. One at a time is enough: a list's path is never
    // below another's, and a list that was left unfinished starts anew with its next array.
    const ConfigKey *list = nullptr; // its row, or null
    uint32_t list_length = 0;
    bool list_refused = false; // one of its elements was, and the walk went on
    Bytes list_bytes;
};

// Takes one value of the walk, a JsonHandler with a ConfigContext: a value whose path has a row
// becomes an item, one without is skipped. Returns 0; or 1 when the value is refused and the
// message reported.
int config_value_handler(std::string_view path, IndexKey key, const json_value &value,
                         void *context);

// Reports what the walk refuses, a JsonRefusal with a ConfigContext. Returns 1.
int config_refusal_handler(const json_value &value, const char *message, void *context);

// Reads the text of a data rate: "auto", "MCS7", "VHTMCS9", "54M" or "5.5M". False for others.
bool parse_data_rate(const char *text, int &code);
