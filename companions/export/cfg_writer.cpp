// SPDX-License-Identifier: MIT
#include "export/cfg_writer.h"

#include "export/cfg_checks.h"
#include "export/devices.h"
#include "export/text.h"
#include "report/format.h"

namespace {

const CfgField *find_field(const CfgRow &row, std::string_view name, size_t &place)
{
    if (place < row.size() && row[place].name == name)
        return &row[place];
    for (place = 0; place < row.size(); place++)
        if (row[place].name == name)
            return &row[place];
    return nullptr;
}

} // namespace

std::string CfgWriter::write(WtpCfg &cfg)
{
    out_.clear();
    left_out_.clear();
    first_ = true;
    put_members(top_, collect_fields(cfg, kind_));
    return std::move(out_);
}

// --- Layout --------------------------------------------------------------------------------------

void CfgWriter::new_line()
{
    out_ += '\n';
    out_.append(size_t{2} * depth_, ' ');
}

void CfgWriter::begin_element()
{
    if (!first_)
        out_ += ',';
    first_ = false;
    new_line();
}

void CfgWriter::begin(std::string_view name)
{
    begin_element();
    append_json_string(out_, name);
    out_ += ": ";
}

// A path with the positions of the rows that it leads through.
std::string CfgWriter::path_of(const CfgMember &member) const
{
    std::string path;
    size_t turn = 0;
    for (const char c : member.path) {
        if (c == ']' && turn < positions_.size())
            path += std::to_string(positions_[turn++]);
        path += c;
    }
    return path;
}

bool CfgWriter::leave_out(const std::string &path, const std::string &why)
{
    left_out_.push_back(path + ": " + why);
    return false;
}

// --- Members: each function says whether it has put something ------------------------------------

bool CfgWriter::put_members(const std::vector<CfgMember> &members, const CfgRow &row)
{
    bool any = false;
    for (const CfgMember &member : members)
        any |= put_member(member, row);
    return any;
}

bool CfgWriter::put_member(const CfgMember &member, const CfgRow &row)
{
    if (member.row == nullptr && !member.is_array)
        return put_object(member, row);
    if (member.row != nullptr && member.row->form == FORM_IP_SETTINGS)
        return put_addresses(member, row);
    const CfgField *field = find_field(row, member.field, member.place);
    if (field == nullptr)
        return false; // records do not have it
    if (const auto *rows = std::get_if<std::vector<CfgRow>>(&field->value))
        return put_table(member, *rows);
    if (const auto *macs = std::get_if<const Rows<Mac> *>(&field->value))
        return put_list(member, texts_of(**macs));
    if (const auto *hosts = std::get_if<const Rows<HostSlot> *>(&field->value))
        return put_list(member, texts_of(**hosts));
    if (member.is_array)
        return put_texts(member, row, member.place);
    return put_setting(member, field->value);
}

// The members in braces; nothing, and false, when there is none.
bool CfgWriter::put_braces(const CfgMember &member, const CfgRow &row)
{
    const size_t before = out_.size();
    out_ += '{';
    first_ = true;
    depth_++;
    const bool any = put_members(member.members, row);
    depth_--;
    first_ = false;
    if (any) {
        new_line();
        out_ += '}';
    } else {
        out_.resize(before);
    }
    return any;
}

// An object without members would be refused.
bool CfgWriter::put_object(const CfgMember &member, const CfgRow &row)
{
    const size_t before = out_.size();
    const bool was_first = first_;
    begin(member.name);
    if (put_braces(member, row))
        return true;
    out_.resize(before);
    first_ = was_first;
    return false;
}

constexpr std::string_view NOTHING = "{\"comment\": \"nothing that can be sent\"}";

// A row of which nothing can be sent keeps its position.
bool CfgWriter::put_table(const CfgMember &member, const std::vector<CfgRow> &rows)
{
    if (rows.size() > CONFIG_ELEMENTS_MAX)
        return leave_out(path_of(member), std::to_string(rows.size()) + " elements, " +
                                              std::to_string(CONFIG_ELEMENTS_MAX) + " can be sent");
    begin(member.name);
    out_ += '[';
    first_ = true;
    depth_++;
    positions_.push_back(0);
    for (const CfgRow &row : rows) {
        begin_element();
        if (!put_braces(member, row))
            out_ += NOTHING;
        positions_.back()++;
    }
    positions_.pop_back();
    depth_--;
    if (!rows.empty())
        new_line();
    out_ += ']';
    first_ = false;
    return true;
}

// A list whose texts are a setting each; they have neighbouring fields of the same name.
bool CfgWriter::put_texts(const CfgMember &member, const CfgRow &row, size_t place)
{
    begin(member.name);
    out_ += '[';
    first_ = true;
    depth_++;
    positions_.push_back(0);
    for (; place < row.size() && row[place].name == member.field; place++) {
        const auto text = std::get<std::string_view>(row[place].value);
        const std::string why = objection(*member.row, text);
        begin_element();
        if (why.empty())
            append_json_string(out_, text);
        else
            out_ += NOTHING;
        if (!why.empty())
            leave_out(path_of(member), why);
        positions_.back()++;
    }
    positions_.pop_back();
    depth_--;
    new_line();
    out_ += ']';
    first_ = false;
    return true;
}

// A list that is one setting: all of it is sent, or nothing.
bool CfgWriter::put_list(const CfgMember &member, const std::vector<std::string> &elements)
{
    const std::string why = objection_to_list(*member.row, elements, kind_);
    if (!why.empty())
        return leave_out(path_of(member), why);
    begin(member.name);
    out_ += '[';
    first_ = true;
    depth_++;
    for (const std::string &element : elements) {
        begin_element();
        append_json_string(out_, element);
    }
    depth_--;
    if (!elements.empty())
        new_line();
    out_ += ']';
    first_ = false;
    return true;
}

// --- Single values -------------------------------------------------------------------------------

bool CfgWriter::put_setting(const CfgMember &member, const CfgValue &value)
{
    if (std::holds_alternative<Md5Digest>(value))
        return false; // of which no password can be made; the caller tells for all devices
    if (const auto *addr = std::get_if<Ipv4>(&value))
        return put_text(member, ipv4_name(*addr));
    if (const auto *text = std::get_if<std::string_view>(&value))
        return put_text(member, *text);
    const int64_t number = std::get<int64_t>(value);
    if (member.row->form != FORM_DATA_RATE)
        return put_number(member, number);
    const char *rate = data_rate_text(static_cast<int32_t>(number));
    if (!objection(*member.row, rate).empty() || !is_rate_of(rate, number))
        return leave_out(path_of(member), "no text stands for code " + std::to_string(number));
    return put_text(member, rate);
}

bool CfgWriter::put_number(const CfgMember &member, int64_t number)
{
    const ConfigKey &row = *member.row;
    if (number < row.min || number > row.max)
        return leave_out(path_of(member), std::to_string(number) + ", " + std::to_string(row.min) +
                                              " to " + std::to_string(row.max) + " can be sent");
    begin(member.name);
    out_ += std::to_string(number);
    return true;
}

bool CfgWriter::put_text(const CfgMember &member, std::string_view text)
{
    const std::string why = objection(*member.row, text);
    if (!why.empty())
        return leave_out(path_of(member), why);
    begin(member.name);
    append_json_string(out_, text);
    return true;
}

// The one setting that is made of several fields.
bool CfgWriter::put_addresses(const CfgMember &member, const CfgRow &row)
{
    std::string text;
    for (const char *name : {"ip", "mask", "gateway"}) {
        size_t place = 0;
        const CfgField *field = find_field(row, name, place);
        text += (text.empty() ? "" : "/") + ipv4_name(std::get<Ipv4>(field->value));
    }
    Ipv4 ip, mask, gateway;
    if (!parse_ip_settings(text.c_str(), ip, mask, gateway))
        return leave_out(path_of(member), text + " is no address that a device can have");
    return put_text(member, text);
}
