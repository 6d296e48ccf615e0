// SPDX-License-Identifier: MIT
#include "documents/members.h"

#include "documents/spelling.h"

#include <algorithm>
#include <numeric>
#include <set>

namespace {

constexpr std::string_view COMMENT = "comment"; // a member that any object may have
constexpr std::string_view SCHEMA = "$schema";  // one of the whole file

std::string quoted(std::string_view text)
{
    return "'" + std::string(text) + "'";
}

std::string_view name_of(const json_object_entry &member)
{
    return {member.name, member.name_length};
}

// For each member of an object, whether one before it has the same name.
std::vector<bool> find_repeated(const json_value &object)
{
    const json_object_entry *members = object.u.object.values;
    std::vector<unsigned> order(object.u.object.length);
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [=](unsigned one, unsigned other) {
        return name_of(members[one]) < name_of(members[other]);
    });
    std::vector<bool> repeated(order.size());
    for (size_t i = 1; i < order.size(); i++)
        repeated[order[i]] = name_of(members[order[i]]) == name_of(members[order[i - 1]]);
    return repeated;
}

class MemberCheck {
public:
    MemberCheck(const KnownMembers &known, Diagnostics &diagnostics)
        : known_(known), diagnostics_(diagnostics)
    {
    }

    void object(const SettingNode &node, const json_value &value)
    {
        const std::vector<bool> repeated = find_repeated(value);
        for (unsigned i = 0; i < value.u.object.length; i++) {
            const json_object_entry &member = value.u.object.values[i];
            const std::string_view name = name_of(member);
            if (name == COMMENT)
                continue;
            if (repeated[i])
                fault(*member.value, "Member " + quoted(name) + " is given twice" + within(node));
            if (const SettingNode *known = node.find(name))
                one_member(*known, *member.value);
            else if (!node.path.empty() || name != SCHEMA)
                unknown(node, member);
            else if (member.value->type != json_string)
                fault(*member.value, quoted(name) + " has to be a text");
        }
    }

private:
    void fault(const json_value &at, const std::string &text)
    {
        diagnostics_.add(&at, "ERROR: " + text + ".");
    }

    static std::string within(const SettingNode &node)
    {
        return node.path.empty() ? "" : " in " + quoted(node.path);
    }

    void one_member(const SettingNode &node, const json_value &value)
    {
        if (!node.is_array())
            return element(node, value);
        if (value.type != json_array)
            return fault(value, quoted(node.path) + " has to be an array");
        const size_t count = value.u.array.length;
        if (count < node.elements_min())
            fault(value, quoted(node.path) + " is empty, which no device can be");
        if (is_list_of_texts(node) && count > node.elements_max())
            fault(value, quoted(node.path) + " has " + std::to_string(count) + " elements, " +
                             std::to_string(node.elements_max()) + " at most can be kept");
        for (const json_value *one : value.u.array)
            element(node, *one);
        if (node.is_by_port())
            check_ports(node, value);
    }

    // Elements that are told apart by their port; one that is a comment only changes none.
    void check_ports(const SettingNode &node, const json_value &array)
    {
        std::set<int64_t> ports;
        for (const json_value *one : array.u.array) {
            if (one->type != json_object || is_comment(*one))
                continue;
            const json_value *port = nullptr;
            for (const json_object_entry &member : one->u.object)
                port = name_of(member) == "port" ? member.value : port;
            const std::string who = "an element of " + quoted(node.path);
            if (port == nullptr)
                fault(*one, who + " has no 'port'");
            else if (port->type == json_integer && !ports.insert(port->u.integer).second)
                fault(*one,
                      who + " has the port of one before it, " + std::to_string(port->u.integer));
        }
    }

    static bool is_comment(const json_value &value)
    {
        return value.type == json_object && value.u.object.length == 1 &&
               name_of(value.u.object.values[0]) == COMMENT;
    }

    // A value that is no array of the node's, or one of its elements. The type of a setting's
    // single value is checked with the value.
    void element(const SettingNode &node, const json_value &value)
    {
        const bool is_object = value.type == json_object;
        if (node.row == nullptr && is_object)
            return object(node, value);
        if (holds_place(node, value) ||
            (node.row != nullptr && !is_object && value.type != json_array))
            return;
        const char *wanted = node.row == nullptr                ? "an object"
                             : node.row->kind() == json_integer ? "a number"
                                                                : "a text";
        fault(value, (node.is_array() ? "an element of " : "") + quoted(node.path) + " has to be " +
                         wanted);
    }

    // A comment in the place of a text that is left as it is, in an array whose elements are sent
    // one by one.
    static bool holds_place(const SettingNode &node, const json_value &value)
    {
        return is_list_of_texts(node) && is_comment(value);
    }

    static bool is_list_of_texts(const SettingNode &node)
    {
        return node.is_array() && node.row != nullptr && node.row->element_size() == 0;
    }

    void unknown(const SettingNode &node, const json_object_entry &member)
    {
        if (diagnostics_.is_full())
            return diagnostics_.add(member.value, {});
        const std::string_view name = name_of(member);
        std::string hint, path(node.path);
        path.append(path.empty() ? "" : ".").append(name);
        if (known_.row_of(path) != nullptr)
            return fault(*member.value, "Member " + quoted(name) + within(node) + " is sent as " +
                                            path + ", though it is no member of that object");
        if (const char *place = place_in_other_kind(node, name)) {
            hint = place;
        } else {
            std::vector<std::string_view> names = {COMMENT};
            for (const SettingNode &one : node.members)
                names.push_back(one.name);
            if (const std::string_view meant = nearest_name(name, names); !meant.empty())
                hint = ", did you mean " + quoted(meant) + "?";
        }
        if (!hint.ends_with('?'))
            hint += '.';
        diagnostics_.add(member.value,
                         "ERROR: Unknown member " + quoted(name) + within(node) + hint);
    }

    // For a member that the other kind of device has.
    const char *place_in_other_kind(const SettingNode &node, std::string_view name) const
    {
        const bool of_switch = known_.kind == DEVICE_SWITCH;
        std::string path(node.path);
        path.append(path.empty() ? "" : ".").append(name);
        const ConfigKey *row = config_keys(other_kind(known_.kind));
        for (; !row->path.empty(); row++) {
            const std::string_view rest = row->path.substr(std::min(path.size(), row->path.size()));
            if (row->path.starts_with(path) && (rest.empty() || rest[0] == '.' || rest[0] == '['))
                return of_switch ? ", which access points have (--type 0)"
                                 : ", which switches have (--type 1)";
        }
        return nullptr;
    }

    const KnownMembers &known_;
    Diagnostics &diagnostics_;
};

} // namespace

KnownMembers::KnownMembers(DeviceKind of) : kind(of), root(settings_tree(of))
{
    for (const ConfigKey *row = config_keys(of); !row->path.empty(); row++)
        rows.emplace(row->path, row);
}

void check_members(const KnownMembers &known, const json_value &root, Diagnostics &diagnostics)
{
    const std::string_view settings = known.root.members.front().name;
    bool there = false;
    if (root.type == json_object) {
        for (const json_object_entry &member : root.u.object)
            there |= name_of(member) == settings;
        MemberCheck(known, diagnostics).object(known.root, root);
    }
    if (!there)
        diagnostics.add(nullptr, "ERROR: No member " + quoted(settings) + ".");
}
