// SPDX-License-Identifier: MIT
// A stored configuration as a tree of fields by their names, made by its layout.
#pragma once

#include "device/wtp_record.h"

#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

struct CfgField;
using CfgRow = std::vector<CfgField>; // in the order of the layout

// A field's value; a digest is what a password is stored as. A table of structures is made of rows.
using CfgValue = std::variant<int64_t, std::string_view, Ipv4, Md5Digest, const ArrayView<Mac> *,
                              const ArrayView<HostSlot> *, std::vector<CfgRow>>;

struct CfgField {
    std::string_view name; // as in cfg_layout.h
    CfgValue value;
};

// All fields of a configuration. It views the record.
CfgRow collect_fields(WtpCfg &cfg, uint8_t wtp_type);
