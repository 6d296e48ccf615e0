// SPDX-License-Identifier: MIT
// Makes of a stored configuration a document for zov cfg --file.
#pragma once

#include "export/cfg_fields.h"
#include "export/cfg_members.h"

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

class CfgWriter {
public:
    using Json = nlohmann::ordered_json;

    // For devices of one kind.
    explicit CfgWriter(DeviceKind kind) : kind_(kind), top_(make_cfg_members(kind)) {}

    // The object wtp_cfg; empty when there is nothing to send.
    Json write(WtpCfg &cfg);

    // What the last one lacks, "PATH: WHY" each, more than once when several elements do.
    const std::vector<std::string> &left_out() const { return left_out_; }

private:
    // Each gives null when there is nothing to send.
    Json object(const std::vector<CfgMember> &members, const CfgRow &row);
    Json member(const CfgMember &member, const CfgRow &row);
    Json table(const CfgMember &member, const std::vector<CfgRow> &rows);
    Json texts(const CfgMember &member, const CfgRow &row);
    Json list(const CfgMember &member, const std::vector<std::string> &elements);
    Json setting(const CfgMember &member, const CfgValue &value);
    Json number(const CfgMember &member, int64_t number);
    Json text(const CfgMember &member, std::string_view text);
    Json addresses(const CfgMember &member, const CfgRow &row);

    Json report_skipped(const CfgMember &member, const std::string &why);

    DeviceKind kind_;
    std::vector<CfgMember> top_;
    std::vector<std::string> left_out_;
};
