// SPDX-License-Identifier: MIT
// Writes what users read of the JSON report, to standard output: the JSON Schema of the document
// that zov-export makes of it, and the manual page zov-report(5) in mdoc. Both are made from what
// the printers print; each member has a text in members.def, or is a setting of settings.def.
//
// usage: generate_report_docs schema|man TEMPLATE
#include "report/json_members.h"
#include "tools/doc_writer.h"
#include "tools/member_recorder.h"
#include "tools/sample_record.h"
#include "tools/setting_texts.h"
#include "util/output.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

using Json = nlohmann::ordered_json;
using std::string;
using std::string_view;

namespace {

struct MemberText {
    string_view path, text;
};

constexpr MemberText TEXTS[] = {
#define MEMBER(path, text) {path, text},
#include "report/members.def"
};

enum : uint8_t { DEVICE_OTHER = 1 };

// What the report has of a kind of devices; `all`: also what only options bring or take away.
Member record_members(uint8_t wtp_type, bool all)
{
    MemberRecorder recorder;
    for (const bool rows : {true, false})
        for (const bool configuration : {true, false})
            for (const bool basic : {false, true}) {
                const SampleRecord sample(wtp_type, rows, configuration);
                if (all || !basic)
                    json_members::print_wtp(recorder, sample.record(), {all, basic});
            }
    return recorder.element();
}

bool is_optional(const Member &member, const Member &in)
{
    return member.times < in.times;
}

// --- Texts ---------------------------------------------------------------------------------------

string_view text_of(const Member &member)
{
    for (const MemberText &row : TEXTS)
        if (row.path == member.path)
            return row.text;
    const SettingText *setting =
        member.path.starts_with("wtp_cfg.") ? find_setting_text(member.path) : nullptr;
    if (setting != nullptr)
        return setting->description;
    fail("members.def: no text for '%s'\n", member.path.c_str());
    exit(1);
}

void collect_paths(const Member &member, std::set<string, std::less<>> &paths)
{
    paths.insert(member.path);
    for (const Member &below : member.members)
        collect_paths(below, paths);
}

// A row that no member has is a mistake as well.
int check_texts(std::initializer_list<const Member *> kinds)
{
    std::set<string, std::less<>> paths;
    for (const Member *kind : kinds)
        collect_paths(*kind, paths);
    int status = 0;
    for (const MemberText &row : TEXTS)
        if (paths.find(row.path) == paths.end())
            status = fail("members.def: no member '%s'\n", string(row.path).c_str());
    return status;
}

// --- JSON Schema ---------------------------------------------------------------------------------

void add_schema(Json &schema, const Member &member);

void add_object_schema(Json &schema, const Member &object)
{
    Json &properties = schema["properties"] = Json::object();
    Json required = Json::array();
    for (const Member &member : object.members) {
        Json &property = properties[member.name];
        property["description"] = text_of(member);
        add_schema(property, member);
        if (!is_optional(member, object))
            required.push_back(member.name);
    }
    schema["required"] = required;
    schema["additionalProperties"] = false;
}

void add_schema(Json &schema, const Member &member)
{
    switch (member.type) {
    case MemberType::object:
        schema["type"] = "object";
        add_object_schema(schema, member);
        break;
    case MemberType::array:
        schema["type"] = "array";
        if (member.count > 0)
            schema["minItems"] = schema["maxItems"] = member.count;
        add_schema(schema["items"], member.members.at(0));
        break;
    case MemberType::integer:
        schema["type"] = "integer";
        schema["minimum"] = member.low;
        schema["maximum"] = member.high;
        break;
    case MemberType::text:
        schema["type"] = "string";
        if (*member.pattern != '\0')
            schema["pattern"] = member.pattern;
        break;
    case MemberType::any:
        break;
    }
}

// A subschema for the devices whose wtp_type is this, and another for those of other types.
Json choice(int wtp_type, string_view definition, Json otherwise)
{
    return {{"if", {{"properties", {{"wtp_type", {{"const", wtp_type}}}}}}},
            {"then", {{"$ref", "#/$defs/" + string(definition)}}},
            {"else", std::move(otherwise)}};
}

void print_schema()
{
    const Json device = choice(DEVICE_ACCESS_POINT, "access_point",
                               choice(DEVICE_SWITCH, "switch", {{"$ref", "#/$defs/other"}}));
    Json schema = {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                   {"title", "Device list of a wireless access controller"},
                   {"description",
                    "What zov-export --format json writes; a line of --format ndjson is an "
                    "element of wtp_list. See zov-report(5)."},
                   {"type", "object"},
                   {"required", {"wtp_list"}},
                   {"additionalProperties", false},
                   {"properties",
                    {{"wtp_list",
                      {{"description", "The devices, in the controller's order."},
                       {"type", "array"},
                       {"items", device}}}}}};
    for (const auto &[name, type] : {std::pair("access_point", uint8_t{DEVICE_ACCESS_POINT}),
                                     {"switch", uint8_t{DEVICE_SWITCH}},
                                     {"other", uint8_t{DEVICE_OTHER}}})
        add_schema(schema["$defs"][name], record_members(type, false));
    put(schema.dump(2), "\n");
}

// --- Manual page ---------------------------------------------------------------------------------

string type_words(const Member &member)
{
    switch (member.type) {
    case MemberType::object:
        return "object";
    case MemberType::array: {
        const Member &element = member.members.at(0);
        const string count = member.count == 0 ? "" : std::to_string(member.count) + " ";
        return "array of " + count +
               (element.type == MemberType::object    ? "objects"
                : element.type == MemberType::integer ? "integers"
                : *element.words != '\0'              ? string(element.words) + "es"
                                                      : "texts");
    }
    case MemberType::integer:
        return "integer";
    case MemberType::text:
        return *member.words == '\0' ? "text" : member.words;
    case MemberType::any:
        break;
    }
    return "any";
}

// The entries of the members below an object that are not known yet, in the order of the report.
void print_entries(const Member &member, std::set<string, std::less<>> &known, bool configuration)
{
    for (const Member &below : member.members) {
        const bool is_element = below.path == member.path;
        if (below.path.empty() || below.path.starts_with("wtp_cfg") != configuration)
            continue;
        if (!is_element && known.insert(below.path).second) {
            put(".It Va ", below.path, " Pq ", type_words(below), "\n");
            put_sentences(text_of(below));
        }
        print_entries(below, known, configuration);
    }
}

void print_members(std::initializer_list<std::pair<const char *, const Member *>> kinds)
{
    std::set<string, std::less<>> known;
    for (const bool configuration : {false, true}) {
        put(configuration ? ".Sh STORED CONFIGURATION\n" : ".Sh MEMBERS\n");
        for (const auto &[title, kind] : kinds) {
            put(".Ss ", title, "\n.Bl -tag -width Ds\n");
            print_entries(*kind, known, configuration);
            put(".El\n");
        }
    }
}

int print_manual(const char *name)
{
    const Member other = record_members(DEVICE_OTHER, true);
    const Member access_point = record_members(DEVICE_ACCESS_POINT, true);
    const Member of_switch = record_members(DEVICE_SWITCH, true);
    std::ifstream file(name);
    for (string line; std::getline(file, line);) {
        if (line != ".\\\" The members stand here.")
            put(line, "\n");
        else
            print_members({{"Every device", &other},
                           {"Access points", &access_point},
                           {"Switches", &of_switch}});
    }
    if (!file.eof())
        return fail("generate_report_docs: cannot read %s\n", name);
    return check_texts({&other, &access_point, &of_switch});
}

} // namespace

static int run(int argc, char **argv)
{
    const string what = argc > 1 ? argv[1] : "";
    int status = 0;
    if (what == "schema")
        print_schema();
    else if (what == "man" && argc == 3)
        status = print_manual(argv[2]);
    else
        status = fail("usage: generate_report_docs schema|man TEMPLATE\n");
    return std::cout.flush() ? status : 1;
}

int main(int argc, char **argv)
{
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        return fail("generate_report_docs: %s\n", error.what());
    }
}
