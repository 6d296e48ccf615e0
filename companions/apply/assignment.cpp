// SPDX-License-Identifier: MIT
#include "apply/assignment.h"

#include "common/command_line.h"
#include "common/stored_message.h"
#include "config/config_file.h"
#include "config/config_walk.h"
#include "documents/setting_table.h"

#include <algorithm>
#include <nlohmann/json.hpp>

using std::string;
using std::string_view;
using Json = nlohmann::ordered_json;

static constexpr string_view TOP = "wtp_cfg";

static Selector selector_of(const string &name, string_view text)
{
    Selector made;
    made.text = text;
    const size_t equals = text.find('=');
    if (text == "*") {
        made.kind = Selector::every;
    } else if (equals != string_view::npos && equals > 0) {
        made.kind = Selector::matching;
        made.member = text.substr(0, equals);
        made.value = text.substr(equals + 1);
    } else if (!take_number<size_t>(made.text.c_str(), 0, CONFIG_ELEMENTS_MAX, made.number)) {
        throw UsageError(name + ": [" + made.text + "] is none of [N], [*] and [MEMBER=VALUE]");
    }
    return made;
}

// Where the value begins: behind the first = that is in no brackets.
static size_t end_of_path(string_view text)
{
    bool in_brackets = false;
    for (size_t i = 0; i < text.size(); i++) {
        if (text[i] == '=' && !in_brackets)
            return i;
        in_brackets = (in_brackets || text[i] == '[') && text[i] != ']';
    }
    return string_view::npos;
}

void read_value(Assignment &set)
{
    const char *path = set.value.c_str() + 1;
    Bytes bytes;
    StoredMessage message;
    if (config_file_read(strcmp(path, "-") == 0 ? "/dev/stdin" : path, bytes, message.sink()) != 0)
        throw UsageError(set.name + ": cannot read " + path);
    string value(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    if (value.empty() && strcmp(path, "-") == 0)
        throw UsageError(set.name + ": standard input is empty");
    for (const string_view end : {"\r\n", "\n"})
        if (value.ends_with(end)) {
            value.resize(value.size() - end.size());
            break;
        }
    set.value = std::move(value);
}

Assignment parse_assignment(string_view text)
{
    const size_t end = end_of_path(text);
    Assignment set;
    string_view path = text.substr(0, end);
    if (end == string_view::npos) // behind an '=' in brackets there may be a secret
        throw UsageError("--set " + string(text.substr(0, text.find('='))) +
                         ": no = outside brackets");
    set.name = "--set " + string(path);
    if (path.starts_with("wtp_cfg."))
        path.remove_prefix(TOP.size() + 1);
    if (path.empty())
        throw UsageError(set.name + ": no PATH=VALUE");
    if (path.size() > JsonIterStack::PATH_MAX_BYTES)
        throw UsageError("--set: no setting has a path of " + std::to_string(path.size()) +
                         " bytes");
    set.path = TOP;
    while (!path.empty()) {
        const size_t stop = std::min(path.find_first_of(".["), path.size());
        Assignment::Part &part = set.parts.emplace_back();
        part.name = path.substr(0, stop);
        set.path += "." + part.name;
        path.remove_prefix(stop);
        if (path.starts_with('[')) {
            const size_t close = path.find(']'); // before the '=' that ends the path
            set.selectors.push_back(selector_of(set.name, path.substr(1, close - 1)));
            set.path += "[]";
            part.has_selector = true;
            path.remove_prefix(close + 1);
        }
        if (path.starts_with('.') && path.size() > 1)
            path.remove_prefix(1);
        else if (!path.empty())
            throw UsageError(set.name + ": '" + string(path) + "' cannot be read");
    }
    set.value = text.substr(end + 1);
    set.from_file = set.value.starts_with('@');
    set.from_input = set.value == "@-";
    return set;
}

const ConfigKey *Assignment::key(DeviceKind kind) const
{
    const ConfigKey *key = config_key_find(config_keys(kind), path);
    const ConfigKey *list = config_key_find(config_keys(kind), path + "[]");
    return key != nullptr && key->element_size() == 0    ? key
           : list != nullptr && list->element_size() > 0 ? list
                                                         : nullptr;
}

// The value as the setting's row has it; any other than a number stays a text, which is refused.
static Json value_of(const Assignment &set, const ConfigKey *key)
{
    int64_t number = 0;
    if (key != nullptr && key->kind() == json_integer && take_number(set.value.c_str(), number))
        return number;
    if (key == nullptr || key->element_size() == 0)
        return set.value;
    Json list = Json::array();
    for (size_t from = 0, comma = 0; !set.value.empty() && comma != string::npos;
         from = comma + 1) {
        comma = set.value.find(',', from);
        list.push_back(set.value.substr(from, comma - from));
    }
    return list;
}

// Whether the elements of a member of wtp_cfg are told apart by their port.
static bool is_by_port(const string &member, DeviceKind kind)
{
    const SettingTable &table = setting_table(kind);
    const size_t column = table.find(member);
    return column != SettingTable::NONE && table.columns[column].table != nullptr &&
           table.columns[column].table->port != SettingTable::NONE;
}

string Assignment::document(const ConfigKey *key, DeviceKind kind) const
{
    Json node = value_of(*this, key);
    for (size_t i = parts.size(); i > 0; i--) {
        const Part &part = parts[i - 1];
        if (part.has_selector) {
            if (i == 1 && is_by_port(part.name, kind) && node.is_object() && !node.contains("port"))
                node["port"] = 1;
            node = Json::array({node});
        }
        node = Json{{part.name, node}};
    }
    try {
        return Json{{TOP, node}}.dump();
    } catch (const Json::type_error &) {
        throw UsageError(name + ": the value is no UTF-8");
    }
}

// What the selectors of a --set compare has to be there, and to be no secret.
static void check_selectors(const Assignment &set, DeviceKind kind)
{
    const SettingTable *table = &setting_table(kind);
    string path(TOP);
    size_t selector = 0;
    for (const Assignment::Part &part : set.parts) {
        path += "." + part.name;
        if (!part.has_selector)
            continue;
        path += "[]";
        const size_t column = table->find_path(path);
        if (column == SettingTable::NONE || table->columns[column].table == nullptr)
            return; // which is refused otherwise
        table = table->columns[column].table.get();
        const Selector &one = set.selectors[selector++];
        if (one.kind != Selector::matching)
            continue;
        const size_t member = table->find(one.member);
        const bool is_setting =
            member != SettingTable::NONE && table->columns[member].key != nullptr;
        if (!is_setting)
            throw UsageError(set.name + ": " + path + " has no '" + one.member +
                             "' to be chosen by");
        if (table->columns[member].has_mark(MARK_SECRET))
            throw UsageError("--set: elements cannot be chosen by " + one.member + ", a secret");
    }
}

void Assignment::check(const ConfigKey &key, DeviceKind kind) const
{
    check_selectors(*this, kind);
    if ((key.marks & MARK_SECRET) != 0 && !from_file)
        throw UsageError(name + ": write a secret into a file, and give PATH=@FILE");
    if ((key.marks & MARK_STATE) != 0)
        throw UsageError(name + ": devices change that by themselves");
    if (key.path.ends_with("[].port"))
        throw UsageError(name + ": elements are told apart by it");
}
