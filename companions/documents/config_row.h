// SPDX-License-Identifier: MIT
// A configuration as rows of the settings' tables, with values as the bytes that items carry.
#pragma once

#include "config/tlv_buffer.h"
#include "device/wtp_record.h"
#include "documents/setting_table.h"

#include <optional>
#include <string>
#include <vector>

struct ConfigRow;

struct ConfigCell {
    std::optional<std::string> value; // of a setting; none: it is not known
    std::vector<ConfigRow> rows;      // of a table
    unsigned source = 0;              // what has set it, for who changes rows; 0: it is stored
};

struct ConfigRow {
    std::vector<ConfigCell> cells; // one for each column

    explicit ConfigRow(const SettingTable &table) : cells(table.columns.size()) {}
};

// A stored configuration. What records do not have is not known.
ConfigRow read_config(const WtpCfg &cfg, DeviceKind kind);

// Appends the items of a member of wtp_cfg: before the rows of a table their number; with or
// without what the device changes by itself. Throws bad_alloc.
void append_items(TlvBuffer &items, const SettingTable &table, const ConfigRow &row, size_t member,
                  bool with_state);

// The bytes of a number's item, in 32 bits, and back; 0 for other sizes.
std::string number_bytes(uint32_t number);
uint32_t bytes_number(std::string_view bytes);
