// SPDX-License-Identifier: MIT
#include "documents/setting_table.h"

#include "documents/settings_tree.h"

static size_t find_in(const std::unordered_map<std::string_view, size_t> &map,
                      std::string_view text)
{
    const auto found = map.find(text);
    return found == map.end() ? size_t{SettingTable::NONE} : found->second;
}

size_t SettingTable::find(std::string_view name) const
{
    return find_in(by_name, name);
}

size_t SettingTable::find_path(std::string_view path) const
{
    return find_in(by_path, path);
}

static std::vector<std::string> parts_of(const std::string &name)
{
    std::vector<std::string> parts;
    for (size_t from = 0, dot = 0; dot != std::string::npos; from = dot + 1) {
        dot = name.find('.', from);
        parts.push_back(name.substr(from, dot - from));
    }
    return parts;
}

static std::unique_ptr<const SettingTable> make_table(const SettingNode &of, DeviceKind kind,
                                                      size_t prefix);

// The columns of an object, and of those in it. `prefix` is how many bytes of the paths belong to
// the table.
static void add_columns(SettingTable &table, const SettingNode &object, size_t prefix)
{
    for (const SettingNode &node : object.members) {
        if (node.row == nullptr && !node.is_array()) {
            add_columns(table, node, prefix);
            continue;
        }
        const bool is_list = node.row != nullptr && node.row->element_size() > 0;
        const size_t brackets = node.is_array() ? 2 : 0;
        SettingColumn &column = table.columns.emplace_back();
        column.name = node.path.substr(prefix, node.path.size() - prefix - brackets);
        column.parts = parts_of(column.name);
        column.path = node.path;
        if (node.row != nullptr && (!node.is_array() || is_list)) {
            column.key = node.row;
        } else {
            column.count = config_array_find(node.path);
            column.table = make_table(node, table.kind, node.path.size() + 1);
            if (column.count == nullptr) { // a list of texts, an item each
                column.name += "[]";
                column.texts = node.elements_max();
            }
        }
    }
}

static void set_maps(SettingTable &table)
{
    for (size_t i = 0; i < table.columns.size(); i++) {
        table.by_name.emplace(table.columns[i].name, i);
        table.by_path.emplace(table.columns[i].path, i);
    }
    table.port = table.find("port");
}

static std::unique_ptr<const SettingTable> make_table(const SettingNode &of, DeviceKind kind,
                                                      size_t prefix)
{
    auto made = std::make_unique<SettingTable>();
    made->kind = kind;
    if (of.row != nullptr) {
        SettingColumn &text = made->columns.emplace_back();
        text.path = of.path;
        text.key = of.row;
    } else {
        add_columns(*made, of, prefix);
    }
    set_maps(*made);
    return made;
}

static SettingTable make_top(DeviceKind kind)
{
    constexpr std::string_view TOP = "wtp_cfg";
    const SettingNode tree = settings_tree(kind);
    const SettingNode &top = *tree.find(TOP);
    SettingTable table;
    table.kind = kind;
    for (size_t i = 0; i < top.members.size(); i++) {
        const size_t first = table.columns.size();
        SettingNode one = {top.name, top.path, nullptr, {top.members[i]}};
        add_columns(table, one, TOP.size() + 1);
        for (size_t at = first; at < table.columns.size(); at++)
            table.columns[at].member = i;
    }
    set_maps(table);
    return table;
}

const SettingTable &setting_table(DeviceKind kind)
{
    static const SettingTable access_points = make_top(DEVICE_ACCESS_POINT);
    static const SettingTable switches = make_top(DEVICE_SWITCH);
    return kind == DEVICE_SWITCH ? switches : access_points;
}
