// SPDX-License-Identifier: MIT
#include "export/cfg_members.h"

#include "documents/settings_tree.h"

// `table` is how many bytes of the paths belong to the table that the members are in. A list of
// texts has an item for each of them, as the layout has a field; other lists are one.
static std::vector<CfgMember> make_members(const SettingNode &of, size_t table)
{
    std::vector<CfgMember> members;
    for (const SettingNode &node : of.members) {
        const size_t brackets = node.is_array() ? 2 : 0;
        const bool is_table = node.is_array() && node.row == nullptr;
        CfgMember &made = members.emplace_back();
        made.name = node.name;
        made.path = node.path;
        made.row = node.row;
        made.is_array = node.is_array();
        made.field = node.path.substr(table, node.path.size() - table - brackets);
        if (made.is_array && made.row != nullptr && made.row->element_size() == 0)
            made.field += "[]";
        made.members = make_members(node, is_table ? node.path.size() + 1 : table);
    }
    return members;
}

std::vector<CfgMember> make_cfg_members(DeviceKind kind)
{
    constexpr std::string_view TOP = "wtp_cfg";
    return make_members(*settings_tree(kind).find(TOP), TOP.size() + 1);
}
