// SPDX-License-Identifier: MIT
// Makes of a stored configuration a document for zov cfg --file.
#pragma once

#include "documents/config_row.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

class CfgWriter {
public:
    using Json = nlohmann::ordered_json;

    // For devices of one kind.
    explicit CfgWriter(DeviceKind kind) : kind_(kind) {}

    // The object wtp_cfg; null when there is nothing to send. What a device changes by itself is
    // not in it.
    Json write(const WtpCfg &cfg);

    // What the last one lacks, "PATH: WHY" each, more than once when several elements do.
    const std::vector<std::string> &left_out() const { return left_out_; }

private:
    // Each gives null when there is nothing to send.
    Json object(const SettingTable &table, const ConfigRow &row);
    Json array(const SettingColumn &column, const ConfigCell &cell);
    Json setting(const SettingColumn &column, const ConfigCell &cell);

    DeviceKind kind_;
    std::vector<std::string> left_out_;
};
