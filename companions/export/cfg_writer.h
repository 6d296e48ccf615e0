// SPDX-License-Identifier: MIT
// Writes a stored configuration as a document for zov cfg --file.
#pragma once

#include "export/cfg_fields.h"
#include "export/cfg_members.h"

#include <string>
#include <string_view>
#include <vector>

class CfgWriter {
public:
    // For devices of one kind.
    explicit CfgWriter(DeviceKind kind) : kind_(kind), top_(make_cfg_members(kind)) {}

    // The members of wtp_cfg, indented for standing in an object of the top level, one a line;
    // empty when there is nothing to send.
    std::string write(WtpCfg &cfg);

    // What the last document lacks, "PATH: WHY" each.
    const std::vector<std::string> &left_out() const { return left_out_; }

private:
    bool put_members(const std::vector<CfgMember> &members, const CfgRow &row);
    bool put_member(const CfgMember &member, const CfgRow &row);
    bool put_braces(const CfgMember &member, const CfgRow &row);
    bool put_object(const CfgMember &member, const CfgRow &row);
    bool put_table(const CfgMember &member, const std::vector<CfgRow> &rows);
    bool put_texts(const CfgMember &member, const CfgRow &row, size_t place);
    bool put_list(const CfgMember &member, const std::vector<std::string> &elements);
    bool put_setting(const CfgMember &member, const CfgValue &value);
    bool put_number(const CfgMember &member, int64_t number);
    bool put_text(const CfgMember &member, std::string_view text);
    bool put_addresses(const CfgMember &member, const CfgRow &row);

    void begin(std::string_view name);
    void begin_element();
    void new_line();
    bool leave_out(const std::string &path, const std::string &why);
    std::string path_of(const CfgMember &member) const;

    DeviceKind kind_;
    std::vector<CfgMember> top_;
    std::string out_;
    bool first_ = true; // of its object or array
    unsigned depth_ = 2;
    std::vector<size_t> positions_; // of the tables' rows on the way
    std::vector<std::string> left_out_;
};
