// SPDX-License-Identifier: MIT
#include "apply/sources.h"

#include "apply/undo.h"
#include "common/address_text.h"
#include "common/plain_text.h"
#include "config/config_walk.h"
#include "documents/checker.h"
#include "documents/settings_tree.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <span>
#include <utility>

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
constexpr const char *INCOMPARABLE =
    " cannot be compared, since no record has it: send it by zov cfg";

// The address that a file is named by, "02-A3-00-00-00-01.json"; false for other names.
bool address_of(const string &path, Mac &mac)
{
    const string name = path.substr(path.rfind('/') + 1);
    if (name.size() != 17 + strlen(".json") || !name.ends_with(".json"))
        return false;
    string text = name.substr(0, 17);
    for (size_t i = 0; i < text.size(); i++)
        if (i % 3 == 2 ? std::exchange(text[i], ':') != '-'
                       : isxdigit(static_cast<unsigned char>(text[i])) == 0)
            return false;
    return parse_mac(text.c_str(), mac);
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
    Document document(const string &name, DeviceKind kind);
    void refuse_incomparable(std::span<const Document> documents);
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
Document Reader::document(const string &name, DeviceKind kind)
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
            made.refusal = string(item.path) + INCOMPARABLE;
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

// What is for one kind of device only. If it is for both, the chosen devices decide.
void Reader::refuse_incomparable(std::span<const Document> documents)
{
    if (documents.size() == 1 && !documents.front().refusal.empty())
        refuse(documents.front().name, documents.front().refusal);
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
            made.push_back(document(path, kind));
            made.back().role = is_own ? Document::own : Document::layer;
            if (checker_.items().empty())
                break; // with what is wrong, which is said once
        }
    }
    show_diagnostics(true);
    refuse_incomparable(made);
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

void Reader::add_kind_of_set(const Assignment &set, DeviceKind kind)
{
    const ConfigKey *key = set.key(kind);
    if (checker_.open_text(set.name, set.document(key, kind)) != nullptr)
        checker_.check(kind);
    Document made;
    made.name = set.name;
    made.kind = kind;
    made.role = Document::set;
    made.selectors = set.selectors;
    size_t begin = 0;
    for (const SentItem &item : checker_.items()) {
        if (key != nullptr && item.row == key)
            made.items = checker_.buffer().bytes().substr(begin, item.end - begin);
        begin = item.end;
    }
    if (key != nullptr && (key->marks & MARK_UNREADABLE) != 0)
        made.refusal = string("that") + INCOMPARABLE;
    show_diagnostics(false);
    if (made.items.empty() && !has_errors_)
        refuse(set.name, "there is no such setting");
    sources_.sets.push_back(std::move(made));
}

void Reader::add_set(const char *text)
{
    Assignment set = parse_assignment(text);
    if (set.from_input && std::exchange(has_input_, true))
        throw UsageError("standard input can be read once only");
    if (set.from_file)
        read_value(set);
    std::vector<DeviceKind> kinds;
    for (const DeviceKind kind : {DEVICE_ACCESS_POINT, DEVICE_SWITCH})
        if (set.key(kind) != nullptr)
            kinds.push_back(kind);
    for (const DeviceKind kind : kinds)
        set.check(*set.key(kind), kind);
    const size_t first = sources_.sets.size();
    if (kinds.empty()) {
        const bool of_switch =
            settings_tree(DEVICE_SWITCH).find(TOP)->find(set.parts.front().name) != nullptr;
        kinds = {of_switch ? DEVICE_SWITCH : DEVICE_ACCESS_POINT};
    }
    for (const DeviceKind kind : kinds)
        if (add_kind_of_set(set, kind); sources_.sets.back().items.empty())
            break; // what is wrong is said once
    refuse_incomparable(std::span(sources_.sets).subspan(first));
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
