// SPDX-License-Identifier: MIT
#include "export/cfg_writer.h"

#include "documents/value_json.h"

#include <utility>

using Json = CfgWriter::Json;

Json CfgWriter::write(const WtpCfg &cfg)
{
    left_out_.clear();
    return object(setting_table(kind_), read_config(cfg, kind_));
}

// The member of that name, a new one unless it came last: those of an object follow each other.
static Json &add_member(Json &object, const std::string &name)
{
    enum : size_t { USUAL = 24 }; // members, which growing would copy
    const bool is_first = object.is_null();
    if (is_first)
        object = Json::object();
    auto &members = object.get_ref<Json::object_t &>();
    if (is_first)
        members.reserve(USUAL);
    if (members.empty() || members.back().first != name)
        members.emplace_back(name, Json());
    return members.back().second;
}

Json CfgWriter::object(const SettingTable &table, const ConfigRow &row)
{
    Json made;
    for (size_t i = 0; i < row.cells.size(); i++) {
        const SettingColumn &column = table.columns[i];
        Json value =
            column.table == nullptr ? setting(column, row.cells[i]) : array(column, row.cells[i]);
        if (value.is_null())
            continue;
        if (column.name.empty())
            return value; // the one text of the row
        Json *at = &made;
        for (const std::string &part : column.parts)
            at = &add_member(*at, part);
        *at = std::move(value);
    }
    return made;
}

// An element of which nothing can be sent keeps its position.
Json CfgWriter::array(const SettingColumn &column, const ConfigCell &cell)
{
    if (column.has_mark(MARK_STATE))
        return {};
    if (cell.rows.size() > CONFIG_ELEMENTS_MAX) {
        left_out_.push_back(std::string(column.path) + ": " + std::to_string(cell.rows.size()) +
                            " elements, " + std::to_string(CONFIG_ELEMENTS_MAX) + " can be sent");
        return {};
    }
    Json made = Json::array();
    for (const ConfigRow &row : cell.rows) {
        Json element = object(*column.table, row);
        if (element.is_null())
            element = {{"comment", "nothing that can be sent"}};
        made.push_back(std::move(element));
    }
    return made;
}

Json CfgWriter::setting(const SettingColumn &column, const ConfigCell &cell)
{
    if (!cell.value || column.has_mark(MARK_STATE))
        return {};
    ValueJson made = value_json(*column.key, kind_, *cell.value);
    if (!made.why.empty())
        left_out_.push_back(std::string(column.path) + ": " + made.why);
    return std::move(made.value);
}
