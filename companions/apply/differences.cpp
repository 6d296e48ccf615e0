// SPDX-License-Identifier: MIT
#include "apply/differences.h"

#include "common/plain_text.h"
#include "documents/items.h"
#include "documents/value_json.h"

#include <algorithm>
#include <cstring>

using std::string;
using std::string_view;

static string joined(const string &above, const string &name)
{
    return above.empty() || name.empty() ? above + name : above + "." + name;
}

string array_path(const string &above, const SettingColumn &column)
{
    const bool has_brackets = column.name.ends_with("[]");
    return joined(above, column.name.substr(0, column.name.size() - (has_brackets ? 2 : 0)));
}

// The elements of a list, in an order of their own where theirs means nothing.
static std::vector<string> elements_of(const ConfigKey &key, const string &bytes)
{
    std::vector<string> elements;
    for (size_t at = 0; at < bytes.size(); at += key.element_size()) {
        string one = bytes.substr(at, key.element_size());
        if (key.form == FORM_HOST_LIST)
            one.erase(std::min(one.find('\0'), one.size()));
        elements.push_back(std::move(one));
    }
    if (key.form == FORM_MAC_LIST)
        std::sort(elements.begin(), elements.end());
    return elements;
}

bool is_same_value(const ConfigKey &key, const string &one, const string &other)
{
    if (one == other)
        return true;
    if (key.element_size() > 0)
        return one.size() == other.size() && elements_of(key, one) == elements_of(key, other);
    if ((key.marks & MARK_JSON) == 0)
        return false;
    using nlohmann::json;
    const json first = json::parse(one, nullptr, false),
               second = json::parse(other, nullptr, false);
    return !first.is_discarded() && !second.is_discarded() && first == second;
}

namespace {

class Comparison {
public:
    explicit Comparison(std::vector<Difference> &found) : found_(found) {}

    void rows(const SettingTable &table, const ConfigRow *before, const ConfigRow *after,
              const Difference &where);

private:
    void cells(const SettingColumn &column, const ConfigCell *before, const ConfigCell *after,
               const Difference &where);

    std::vector<Difference> &found_;
};

string ssid_of(const SettingTable &table, const ConfigRow &row)
{
    const size_t ssid = table.find("ssid");
    return ssid == SettingTable::NONE || !row.cells[ssid].value
               ? ""
               : "ssid " + quoted_text(*row.cells[ssid].value);
}

// The row of the same port or position; null when there is none.
const ConfigRow *same_row(const SettingTable &table, const ConfigRow &row, size_t position,
                          const std::vector<ConfigRow> &rows)
{
    if (table.port == SettingTable::NONE)
        return position < rows.size() ? &rows[position] : nullptr;
    for (const ConfigRow &one : rows)
        if (one.cells[table.port].value == row.cells[table.port].value)
            return &one;
    return nullptr;
}

void Comparison::cells(const SettingColumn &column, const ConfigCell *before,
                       const ConfigCell *after, const Difference &where)
{
    Difference here = where;
    here.column = &column;
    if (column.table == nullptr) {
        here.path = joined(where.path, column.name);
        const bool was = before != nullptr && before->value.has_value();
        if (after == nullptr || !after->value ||
            (was && is_same_value(*column.key, *before->value, *after->value)))
            return;
        here.kind = was ? Difference::changed : Difference::added;
        here.from = was ? *before->value : "";
        here.to = *after->value;
        found_.push_back(std::move(here));
        return;
    }
    const SettingTable &table = *column.table;
    const auto descend = [&](size_t position, const ConfigRow *old, const ConfigRow *now) {
        const ConfigRow &row = now != nullptr ? *now : *old;
        const auto port = table.port == SettingTable::NONE ? std::optional<string>()
                                                           : row.cells[table.port].value;
        Difference element = here;
        if (port)
            element.port = bytes_number(*port);
        element.path = array_path(where.path, column) + "[" +
                       (port ? "port=" + std::to_string(element.port) : std::to_string(position)) +
                       "]";
        if (const string label = ssid_of(table, old != nullptr ? *old : row); !label.empty())
            element.label = label;
        element.kind = now == nullptr ? Difference::removed : Difference::added;
        if ((old == nullptr || now == nullptr) && column.count != nullptr)
            found_.push_back(element);
        if (now != nullptr)
            rows(table, old, now, element);
    };
    static const std::vector<ConfigRow> NONE;
    const std::vector<ConfigRow> &old = before == nullptr ? NONE : before->rows;
    const std::vector<ConfigRow> &now = after == nullptr ? NONE : after->rows;
    for (size_t i = 0; i < old.size(); i++)
        if (same_row(table, old[i], i, now) == nullptr)
            descend(i, &old[i], nullptr);
    for (size_t i = 0; i < now.size(); i++)
        descend(i, same_row(table, now[i], i, old), &now[i]);
}

void Comparison::rows(const SettingTable &table, const ConfigRow *before, const ConfigRow *after,
                      const Difference &where)
{
    for (size_t i = 0; i < table.columns.size(); i++) {
        const SettingColumn &column = table.columns[i];
        if (column.has_mark(MARK_STATE))
            continue;
        Difference here = where;
        if (where.path.empty())
            here.member = column.member;
        cells(column, before == nullptr ? nullptr : &before->cells[i],
              after == nullptr ? nullptr : &after->cells[i], here);
    }
}

} // namespace

std::vector<Difference> compare(const ConfigRow &before, const ConfigRow &after, DeviceKind kind)
{
    std::vector<Difference> found;
    Comparison(found).rows(setting_table(kind), &before, &after, {});
    return found;
}

string value_text_of(const SettingColumn &column, DeviceKind kind, const string &bytes)
{
    if (column.key == nullptr)
        return "";
    if ((column.key->marks & MARK_SECRET) != 0)
        return "(secret)";
    const auto value = value_json(*column.key, kind, bytes).value;
    if (value.is_string())
        return quoted_text(value.get<string>());
    if (!value.is_array())
        return value.is_null() ? value_text(column.key, bytes) : value.dump();
    string text;
    for (const auto &element : value)
        text += (text.empty() ? "" : ", ") + quoted_text(element.get<string>());
    return "[" + text + "]";
}

string difference_text(const Difference &difference, DeviceKind kind)
{
    static constexpr const char *SIGNS[] = {"~ ", "+ ", "- "};
    string text = SIGNS[difference.kind] + plain_text(difference.path);
    if (difference.column->table == nullptr) {
        if (difference.kind == Difference::changed)
            text += " " + value_text_of(*difference.column, kind, difference.from) + " ->";
        text += " " + value_text_of(*difference.column, kind, difference.to);
    }
    if (!difference.label.empty())
        text += " (" + difference.label + ")";
    return text;
}
