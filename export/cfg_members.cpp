// SPDX-License-Identifier: MIT
#include "cfg_members.h"

// The member of a path, which is there or is added; `table` is how many bytes of the path belong to
// the table that the member is in.
static CfgMember &member_at(std::vector<CfgMember> &members, std::string_view path, size_t table)
{
    for (CfgMember &member : members)
        if (member.path == path)
            return member;
    CfgMember made;
    made.path = path;
    made.is_array = path.ends_with("[]");
    const std::string_view plain = path.substr(0, path.size() - (made.is_array ? 2 : 0));
    made.name = plain.substr(plain.rfind('.') + 1);
    made.field = plain.substr(table);
    return members.emplace_back(made);
}

// A list of texts has an item for each of them, as the layout has a field; other lists are one.
static void set_row(CfgMember &member, const ConfigKey &row)
{
    member.row = &row;
    if (member.is_array && row.element_size() == 0)
        member.field += "[]";
}

std::vector<CfgMember> make_cfg_members(DeviceKind kind)
{
    constexpr std::string_view TOP = "wtp_cfg.";
    std::vector<CfgMember> top;
    for (const ConfigKey *row = config_keys(kind); !row->path.empty(); row++) {
        std::vector<CfgMember> *members = &top;
        size_t table = TOP.size();
        for (size_t end = TOP.size(); end != std::string_view::npos;) {
            end = row->path.find('.', end + 1);
            const std::string_view path = row->path.substr(0, end);
            CfgMember &member = member_at(*members, path, table);
            if (end == std::string_view::npos)
                set_row(member, *row);
            else if (member.is_array)
                table = end + 1;
            members = &member.members;
        }
    }
    return top;
}
