// SPDX-License-Identifier: MIT
#include "export/cfg_writer.h"

#include "export/cfg_checks.h"
#include "export/devices.h"
#include "report/format.h"

#include <utility>

using Json = CfgWriter::Json;

static const CfgField *find_field(const CfgRow &row, std::string_view name, size_t &place)
{
    if (place < row.size() && row[place].name == name)
        return &row[place];
    for (place = 0; place < row.size(); place++)
        if (row[place].name == name)
            return &row[place];
    return nullptr;
}

// An element of which nothing can be sent keeps its position.
static Json placed(Json element)
{
    if (element.is_null())
        element = {{"comment", "nothing that can be sent"}};
    return element;
}

Json CfgWriter::write(WtpCfg &cfg)
{
    left_out_.clear();
    return object(top_, collect_fields(cfg, kind_));
}

Json CfgWriter::report_skipped(const CfgMember &member, const std::string &why)
{
    left_out_.push_back(std::string(member.path) + ": " + why);
    return {};
}

// An object without members would be refused.
Json CfgWriter::object(const std::vector<CfgMember> &members, const CfgRow &row)
{
    Json::object_t made;
    made.reserve(members.size());
    for (const CfgMember &one : members)
        if (Json value = member(one, row); !value.is_null())
            made.emplace_back(one.name, std::move(value));
    return made.empty() ? Json() : Json(std::move(made));
}

Json CfgWriter::member(const CfgMember &member, const CfgRow &row)
{
    if (member.row == nullptr && !member.is_array)
        return object(member.members, row);
    if (member.row != nullptr && member.row->form == FORM_IP_SETTINGS)
        return addresses(member, row);
    const CfgField *field = find_field(row, member.field, member.place);
    if (field == nullptr)
        return {}; // records do not have it
    if (const auto *rows = std::get_if<std::vector<CfgRow>>(&field->value))
        return table(member, *rows);
    if (const auto *macs = std::get_if<const ArrayView<Mac> *>(&field->value))
        return list(member, texts_of(**macs));
    if (const auto *hosts = std::get_if<const ArrayView<HostSlot> *>(&field->value))
        return list(member, texts_of(**hosts));
    if (member.is_array)
        return texts(member, row);
    return setting(member, field->value);
}

Json CfgWriter::table(const CfgMember &member, const std::vector<CfgRow> &rows)
{
    if (rows.size() > CONFIG_ELEMENTS_MAX)
        return report_skipped(member, std::to_string(rows.size()) + " elements, " +
                                          std::to_string(CONFIG_ELEMENTS_MAX) + " can be sent");
    Json::array_t made;
    made.reserve(rows.size());
    for (const CfgRow &row : rows)
        made.push_back(placed(object(member.members, row)));
    return made;
}

// A list whose texts are a setting each; they have neighbouring fields of the same name.
Json CfgWriter::texts(const CfgMember &member, const CfgRow &row)
{
    Json::array_t made;
    for (size_t place = member.place; place < row.size() && row[place].name == member.field;
         place++)
        made.push_back(placed(text(member, std::get<std::string_view>(row[place].value))));
    return made;
}

// A list that is one setting: all of it is sent, or nothing.
Json CfgWriter::list(const CfgMember &member, const std::vector<std::string> &elements)
{
    const std::string why = why_list_unsendable(*member.row, elements, kind_);
    return why.empty() ? Json(elements) : report_skipped(member, why);
}

Json CfgWriter::setting(const CfgMember &member, const CfgValue &value)
{
    if (std::holds_alternative<Md5Digest>(value))
        return {}; // of which no password can be made
    if (const auto *addr = std::get_if<Ipv4>(&value))
        return text(member, ipv4_name(*addr));
    if (const auto *stored = std::get_if<std::string_view>(&value))
        return text(member, *stored);
    const int64_t code = std::get<int64_t>(value);
    if (member.row->form != FORM_DATA_RATE)
        return number(member, code);
    const char *rate = data_rate_text(static_cast<int32_t>(code));
    if (!why_unsendable(*member.row, rate).empty() || !is_rate_of(rate, code))
        return report_skipped(member, "no text stands for code " + std::to_string(code));
    return rate;
}

Json CfgWriter::number(const CfgMember &member, int64_t number)
{
    const ConfigKey &row = *member.row;
    if (number < row.min || number > row.max)
        return report_skipped(member, std::to_string(number) + ", " + std::to_string(row.min) +
                                          " to " + std::to_string(row.max) + " can be sent");
    return number;
}

Json CfgWriter::text(const CfgMember &member, std::string_view text)
{
    const std::string why = why_unsendable(*member.row, text);
    return why.empty() ? Json(text) : report_skipped(member, why);
}

// The one setting that is made of several fields.
Json CfgWriter::addresses(const CfgMember &member, const CfgRow &row)
{
    std::string joined;
    for (const char *name : {"ip", "mask", "gateway"}) {
        size_t place = 0;
        const CfgField *field = find_field(row, name, place);
        joined += (joined.empty() ? "" : "/") + ipv4_name(std::get<Ipv4>(field->value));
    }
    Ipv4 ip, mask, gateway;
    if (!parse_ip_settings(joined.c_str(), ip, mask, gateway))
        return report_skipped(member, joined + " is no address that a device can have");
    return text(member, joined);
}
