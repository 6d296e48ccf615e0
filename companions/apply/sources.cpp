// SPDX-License-Identifier: MIT
#include "apply/sources.h"

#include "apply/undo.h"
#include "common/address_text.h"
#include "common/plain_text.h"
#include "config/config_walk.h"
#include "documents/checker.h"
#include "documents/settings_tree.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>

using std::string;
using std::string_view;
using Json = nlohmann::ordered_json;

std::vector<const Document *> Sources::of(const Mac &mac, DeviceKind kind) const
{
    std::vector<const Document *> documents;
    const auto add = [&](const std::vector<Document> &some) {
        for (const Document &one : some)
            if (one.kind == kind)
                documents.push_back(&one);
    };
    add(layers);
    if (const auto found = own.find(mac); found != own.end())
        add(found->second);
    add(sets);
    return documents;
}

string Sources::own_name(const Mac &mac) const
{
    const auto found = own.find(mac);
    return found == own.end() ? "" : found->second.front().name;
}

namespace {

constexpr string_view TOP = "wtp_cfg";

// The address that a file is named by, "02-A3-00-00-00-01.json"; false for other names.
bool address_of(const string &path, Mac &mac)
{
    const string name = path.substr(path.rfind('/') + 1);
    if (name.size() != 17 + strlen(".json") || !name.ends_with(".json"))
        return false;
    string text = name.substr(0, 17);
    for (size_t i = 2; i < text.size(); i += 3) {
        if (text[i] != '-')
            return false;
        text[i] = ':';
    }
    return text.find_first_not_of("0123456789ABCDEFabcdef:") == string::npos &&
           parse_mac(text.c_str(), mac);
}

// Whether a name looks as if it were meant so.
bool begins_with_address(const string &path)
{
    string name = path.substr(path.rfind('/') + 1).substr(0, 17);
    std::replace(name.begin(), name.end(), '-', ':');
    Mac mac;
    return name.size() == 17 && std::count(name.begin(), name.end(), ':') == 5 &&
           name.find_first_not_of("0123456789ABCDEFabcdef:") == string::npos &&
           parse_mac(name.c_str(), mac);
}

// A --set, taken apart.
struct Assignment {
    string name;                // for messages: the option and its path
    std::vector<string> names;  // of the members on the way, without brackets
    std::vector<bool> is_array; // whether a member has a selector
    std::vector<Selector> selectors;
    string path; // as the settings' table has it, [] for each selector
    string value;
    bool from_file = false, from_input = false;
};

class Reader {
public:
    explicit Reader(const ApplySettings &settings) : settings_(settings) {}

    Sources read(const std::vector<const char *> &operands);

private:
    void add_directory(const string &path);
    void add_file(const string &path);
    void add_set(const char *text);
    void add_kind_of_set(const Assignment &set, DeviceKind kind);
    std::vector<DeviceKind> kinds_of(const string &name, const json_value &root);
    Document document(const string &name, DeviceKind kind, bool is_alone);
    void check_selectors(const Assignment &set, DeviceKind kind);
    void check_marks(const Assignment &set, const ConfigKey &key, bool is_alone);
    void show_diagnostics(bool has_lines);
    void refuse(const string &name, const string &why);

    const ApplySettings &settings_;
    Sources sources_;
    Checker checker_{false, true};
    bool has_errors_ = false, has_input_ = false;
    std::map<string, std::pair<size_t, string>> notes_; // how many files, and the first
};

void Reader::refuse(const string &name, const string &why)
{
    fprintf(stderr, "%s: ERROR: %s\n", plain_text(name).c_str(), plain_text(why).c_str());
    has_errors_ = true;
}

void Reader::show_diagnostics(bool has_lines)
{
    std::vector<Diagnostic> diagnostics = checker_.take_diagnostics();
    for (Diagnostic &one : diagnostics) {
        has_errors_ |= one.is_error;
        if (!has_lines)
            one.line = 0;
    }
    fputs(text_of(diagnostics).c_str(), stderr);
}

// The kinds of devices that a file can be for: what its comment says, or what its settings tell.
std::vector<DeviceKind> Reader::kinds_of(const string &name, const json_value &root)
{
    static const SettingNode trees[] = {settings_tree(DEVICE_ACCESS_POINT),
                                        settings_tree(DEVICE_SWITCH)};
    if (const uint8_t kind = kind_in_document(root); kind != 0)
        return {static_cast<DeviceKind>(kind)};
    string of_access_points, of_switches; // the first member that only that kind has
    if (root.type == json_object && root[TOP.data()].type == json_object)
        for (const json_object_entry &member : root[TOP.data()].u.object) {
            const string_view one(member.name, member.name_length);
            const bool ap = trees[0].find(TOP)->find(one) != nullptr;
            const bool of_switch = trees[1].find(TOP)->find(one) != nullptr;
            string &only = ap ? of_access_points : of_switches;
            if (ap != of_switch && only.empty())
                only = one;
        }
    if (!of_access_points.empty() && !of_switches.empty()) {
        refuse(name, "it has settings of access points ('" + of_access_points +
                         "') and of switches ('" + of_switches + "')");
        return {};
    }
    if (of_access_points.empty() && of_switches.empty())
        return {DEVICE_ACCESS_POINT, DEVICE_SWITCH};
    return {of_switches.empty() ? DEVICE_ACCESS_POINT : DEVICE_SWITCH};
}

// What the checker has made of a file, without what devices change by themselves.
Document Reader::document(const string &name, DeviceKind kind, bool is_alone)
{
    Document made;
    made.name = name;
    made.kind = kind;
    const string_view bytes = checker_.buffer().bytes();
    size_t begin = 0;
    bool has_state = false;
    for (const SentItem &item : checker_.items()) {
        const ConfigArray *array = item.row == nullptr ? config_array_find(item.path) : nullptr;
        const unsigned marks = item.row != nullptr ? item.row->marks
                               : array != nullptr  ? array->marks
                                                   : 0U;
        if ((marks & MARK_UNREADABLE) != 0) {
            made.refusal = string(item.path) + " cannot be compared, since no record has it: send "
                                               "it by zov cfg";
            if (is_alone)
                refuse(name, made.refusal);
        } else if ((marks & MARK_STATE) != 0) {
            has_state = true;
        } else {
            made.items += bytes.substr(begin, item.end - begin);
        }
        begin = item.end;
    }
    if (has_state) {
        auto &[count, first] = notes_["has states, which devices change by themselves and files "
                                      "cannot set"];
        first = count++ == 0 ? name : first;
    }
    return made;
}

void Reader::add_file(const string &path)
{
    if (path == "-" && std::exchange(has_input_, true))
        throw UsageError("standard input can be read once only");
    Mac mac;
    const bool is_own = address_of(path, mac);
    if (!is_own && begins_with_address(path))
        return refuse(path, "a file of a device is named as 02-A3-00-00-00-01.json");
    if (is_own && sources_.own.count(mac) != 0)
        return refuse(path, mac_name(mac) + " has another file: " + sources_.own_name(mac));
    std::vector<Document> made;
    if (const json_value *root = checker_.open(path.c_str()); root != nullptr) {
        const std::vector<DeviceKind> kinds = kinds_of(path, *root);
        for (const DeviceKind kind : kinds) {
            checker_.check(kind);
            made.push_back(document(path, kind, kinds.size() == 1));
            made.back().is_own = is_own;
            if (checker_.items().empty())
                break; // with what is wrong, which is said once
        }
    }
    show_diagnostics(true);
    if (is_own)
        sources_.own[mac] = std::move(made);
    else
        std::move(made.begin(), made.end(), std::back_inserter(sources_.layers));
}

// All files of it that are JSON, each of which has to be a device's own.
void Reader::add_directory(const string &path)
{
    std::vector<string> names;
    try {
        for (const auto &entry : std::filesystem::directory_iterator(path))
            if (entry.path().extension() == ".json" && entry.is_regular_file())
                names.push_back(entry.path().string());
            else if (entry.path().extension() == ".json")
                refuse(entry.path().string(), "it is no regular file");
    } catch (const std::filesystem::filesystem_error &error) {
        throw Failure("cannot read " + path + ": " + error.code().message());
    }
    std::sort(names.begin(), names.end());
    if (names.empty())
        refuse(path, "there is no file of a device in it");
    Mac mac;
    for (const string &name : names)
        if (address_of(name, mac))
            add_file(name);
        else
            refuse(name, "it is not named by an address, such as 02-A3-00-00-00-01.json");
}

// --- Settings of the command line ----------------------------------------------------------------

Selector selector_of(const string &name, string_view text)
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
size_t end_of_path(string_view text)
{
    bool in_brackets = false;
    for (size_t i = 0; i < text.size(); i++) {
        if (text[i] == '=' && !in_brackets)
            return i;
        in_brackets = (in_brackets || text[i] == '[') && text[i] != ']';
    }
    return string_view::npos;
}

string value_in_file(const Assignment &set, const char *path)
{
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
    return value;
}

Assignment assignment_of(const string_view text)
{
    const size_t end = end_of_path(text);
    Assignment set;
    string_view path = text.substr(0, end);
    set.name = "--set " + string(path);
    if (path.starts_with("wtp_cfg."))
        path.remove_prefix(TOP.size() + 1);
    if (end == string_view::npos || path.empty())
        throw UsageError(set.name + ": no PATH=VALUE");
    if (path.size() > JsonIterStack::PATH_MAX_BYTES)
        throw UsageError("--set: no setting has a path of " + std::to_string(path.size()) +
                         " bytes");
    set.path = TOP;
    while (!path.empty()) {
        const size_t stop = std::min(path.find_first_of(".["), path.size());
        set.names.emplace_back(path.substr(0, stop));
        set.path += "." + set.names.back();
        const bool has_selector = stop < path.size() && path[stop] == '[';
        path.remove_prefix(stop);
        if (has_selector) {
            const size_t close = path.find(']');
            if (close == string_view::npos)
                throw UsageError(set.name + ": a bracket is not closed");
            set.selectors.push_back(selector_of(set.name, path.substr(1, close - 1)));
            set.path += "[]";
            path.remove_prefix(close + 1);
        }
        set.is_array.push_back(has_selector);
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

// The row of a setting, with the path as it stands or as a list; null: that kind does not have it.
const ConfigKey *key_of(const Assignment &set, DeviceKind kind)
{
    const ConfigKey *key = config_key_find(config_keys(kind), set.path);
    const ConfigKey *list = config_key_find(config_keys(kind), set.path + "[]");
    return key != nullptr && key->element_size() == 0    ? key
           : list != nullptr && list->element_size() > 0 ? list
                                                         : nullptr;
}

// The value as the setting's row has it; any other than a number stays a text, which is refused.
Json value_of(const Assignment &set, const ConfigKey *key)
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

// The document that has the one setting, in the first element of each array.
string document_text(const Assignment &set, const ConfigKey *key, DeviceKind kind)
{
    Json node = value_of(set, key);
    for (size_t i = set.names.size(); i > 0; i--) {
        if (set.is_array[i - 1]) {
            const size_t top = setting_table(kind).find(set.names.front());
            const bool is_by_port =
                i == 1 && top != SettingTable::NONE &&
                setting_table(kind).columns[top].table != nullptr &&
                setting_table(kind).columns[top].table->port != SettingTable::NONE;
            if (is_by_port && node.is_object() && !node.contains("port"))
                node["port"] = 1;
            node = Json::array({node});
        }
        node = Json{{set.names[i - 1], node}};
    }
    try {
        return Json{{TOP, node}}.dump();
    } catch (const Json::type_error &) {
        throw UsageError(set.name + ": the value is no UTF-8");
    }
}

// What the selectors of a --set compare has to be there, and to be no secret.
void Reader::check_selectors(const Assignment &set, DeviceKind kind)
{
    const SettingTable *table = &setting_table(kind);
    string path(TOP);
    for (size_t i = 0, selector = 0; i < set.names.size(); i++) {
        path += "." + set.names[i];
        if (!set.is_array[i])
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

void Reader::check_marks(const Assignment &set, const ConfigKey &key, bool is_alone)
{
    if ((key.marks & MARK_SECRET) != 0 && !set.from_file)
        throw UsageError(set.name + ": write a secret into a file, and give PATH=@FILE");
    if ((key.marks & MARK_STATE) != 0)
        throw UsageError(set.name + ": devices change that by themselves");
    if ((key.marks & MARK_UNREADABLE) != 0 && is_alone)
        throw UsageError(set.name + ": that cannot be compared, since no record has it: send it by "
                                    "zov cfg");
    if (key.path.ends_with("[].port"))
        throw UsageError(set.name + ": elements are told apart by it");
}

void Reader::add_kind_of_set(const Assignment &set, DeviceKind kind)
{
    const ConfigKey *key = key_of(set, kind);
    if (checker_.open_text(set.name, document_text(set, key, kind)) != nullptr)
        checker_.check(kind);
    Document made;
    made.name = set.name;
    made.kind = kind;
    made.is_set = true;
    made.selectors = set.selectors;
    size_t begin = 0;
    for (const SentItem &item : checker_.items()) {
        if (key != nullptr && item.row == key)
            made.items = checker_.buffer().bytes().substr(begin, item.end - begin);
        begin = item.end;
    }
    if (key != nullptr && (key->marks & MARK_UNREADABLE) != 0)
        made.refusal = "that cannot be compared, since no record has it: send it by zov cfg";
    show_diagnostics(false);
    if (made.items.empty() && !has_errors_)
        refuse(set.name, "there is no such setting");
    sources_.sets.push_back(std::move(made));
}

void Reader::add_set(const char *text)
{
    Assignment set = assignment_of(text);
    if (set.from_input && std::exchange(has_input_, true))
        throw UsageError("standard input can be read once only");
    if (set.from_file)
        set.value = value_in_file(set, set.value.c_str() + 1);
    std::vector<DeviceKind> kinds;
    for (const DeviceKind kind : {DEVICE_ACCESS_POINT, DEVICE_SWITCH})
        if (key_of(set, kind) != nullptr)
            kinds.push_back(kind);
    for (const DeviceKind kind : kinds)
        check_selectors(set, kind);
    for (const DeviceKind kind : kinds)
        check_marks(set, *key_of(set, kind), kinds.size() == 1);
    if (kinds.empty()) {
        const bool of_switch =
            settings_tree(DEVICE_SWITCH).find(TOP)->find(set.names.front()) != nullptr;
        kinds = {of_switch ? DEVICE_SWITCH : DEVICE_ACCESS_POINT};
    }
    for (const DeviceKind kind : kinds)
        if (add_kind_of_set(set, kind); sources_.sets.back().items.empty())
            break; // what is wrong is said once
}

Sources Reader::read(const std::vector<const char *> &operands)
{
    for (const char *operand : operands)
        if (std::filesystem::is_directory(operand))
            add_directory(operand);
        else
            add_file(operand);
    for (const char *set : settings_.sets)
        add_set(set);
    for (const auto &[note, files] : notes_)
        sources_.notes.push_back(
            files.second + " " + note +
            (files.first > 1 ? " (files: " + std::to_string(files.first) + ")" : ""));
    if (has_errors_)
        throw UsageError("there are errors in what is to be applied; nothing was sent");
    return std::move(sources_);
}

} // namespace

Sources read_sources(const ApplySettings &settings, const std::vector<const char *> &operands)
{
    if (settings.undo == nullptr)
        return Reader(settings).read(operands);
    return read_undo(settings);
}
