// SPDX-License-Identifier: MIT
#include "documents/settings_tree.h"

#include "device/wtp_record.h"

static constexpr uint32_t WEP_KEYS = sizeof WlanCfg::wep.key / sizeof *WlanCfg::wep.key;

uint32_t SettingNode::elements_max() const
{
    if (row == nullptr)
        return CONFIG_ELEMENTS_MAX;
    return row->element_size() > 0 ? row->elements_max() : WEP_KEYS;
}

uint32_t SettingNode::elements_min() const
{
    const ConfigArray *array = config_array_find(path);
    const bool is_fixed = array != nullptr && (array->marks & (MARK_GROWS | MARK_STATE)) == 0;
    return is_fixed ? 1 : 0;
}

bool SettingNode::is_by_port() const
{
    const ConfigArray *array = config_array_find(path);
    return array != nullptr && (array->marks & MARK_STATE) == 0 && find("port") != nullptr;
}

const SettingNode *SettingNode::find(std::string_view member) const
{
    for (const SettingNode &one : members)
        if (one.name == member)
            return &one;
    return nullptr;
}

static SettingNode &member_at(SettingNode &node, std::string_view path)
{
    std::string_view name = path.substr(path.rfind('.') + 1);
    name = name.substr(0, name.find('['));
    for (SettingNode &member : node.members)
        if (member.name == name)
            return member;
    return node.members.emplace_back(SettingNode{name, path, nullptr, {}});
}

SettingNode settings_tree(DeviceKind kind)
{
    SettingNode root;
    for (const ConfigKey *row = config_keys(kind); !row->path.empty(); row++) {
        SettingNode *node = &root;
        for (size_t end = 0; end != std::string_view::npos;) {
            end = row->path.find('.', end + 1);
            node = &member_at(*node, row->path.substr(0, end));
        }
        node->row = row;
    }
    return root;
}

std::string sending_hint(DeviceKind kind)
{
    const char *how = kind == DEVICE_SWITCH ? ", a switch: zov cfg --type 1"
                                            : ", an access point: zov cfg --type 0";
    return std::string(how) + "; its password is not in it";
}

uint8_t kind_in_comment(std::string_view comment)
{
    for (const DeviceKind kind : {DEVICE_SWITCH, DEVICE_ACCESS_POINT})
        if (comment.ends_with(sending_hint(kind)))
            return kind;
    return 0;
}
