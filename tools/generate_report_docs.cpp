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
#include <set>

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
                    json_members::print_wtp(recorder, sample.record(), all, basic);
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

void print_schema_of(JsonPrinter &json, const Member &member);

void print_object_schema(JsonPrinter &json, const Member &object)
{
    string required;
    json.open("properties");
    for (const Member &member : object.members) {
        json.open(member.name);
        json.text("description", text_of(member));
        print_schema_of(json, member);
        json.close();
        if (!is_optional(member, object))
            required += (required.empty() ? "\"" : ", \"") + member.name + "\"";
    }
    json.close();
    json.literal("required", "[" + required + "]");
    json.literal("additionalProperties", "false");
}

void print_schema_of(JsonPrinter &json, const Member &member)
{
    switch (member.type) {
    case MemberType::object:
        json.text("type", "object");
        print_object_schema(json, member);
        break;
    case MemberType::array:
        json.text("type", "array");
        if (member.count > 0) {
            json.number("minItems", member.count);
            json.number("maxItems", member.count);
        }
        json.open("items");
        print_schema_of(json, member.members.at(0));
        json.close();
        break;
    case MemberType::integer:
        json.text("type", "integer");
        json.number("minimum", member.low);
        json.number("maximum", member.high);
        break;
    case MemberType::text:
        json.text("type", "string");
        if (*member.pattern != '\0')
            json.text("pattern", member.pattern);
        break;
    case MemberType::any:
        break;
    }
}

// A subschema for the devices whose wtp_type is this, and another for those of other types.
void open_choice(JsonPrinter &json, int wtp_type, string_view definition)
{
    json.open("if");
    json.open("properties");
    json.open("wtp_type");
    json.number("const", wtp_type);
    json.close();
    json.close();
    json.close();
    json.open("then");
    json.text("$ref", "#/$defs/" + string(definition));
    json.close();
    json.open("else");
}

void print_schema()
{
    put("{");
    JsonPrinter json;
    json.text("$schema", "https://json-schema.org/draft/2020-12/schema");
    json.text("title", "Device list of a wireless access controller");
    json.text("description",
              "What zov-export --format json writes; a line of --format ndjson is an "
              "element of wtp_list. See zov-report(5).");
    json.text("type", "object");
    json.literal("required", "[\"wtp_list\"]");
    json.literal("additionalProperties", "false");
    json.open("properties");
    json.open("wtp_list");
    json.text("description", "The devices, in the controller's order.");
    json.text("type", "array");
    json.open("items");
    open_choice(json, DEVICE_ACCESS_POINT, "access_point");
    open_choice(json, DEVICE_SWITCH, "switch");
    json.text("$ref", "#/$defs/other");
    for (int i = 0; i < 5; i++) // two choices, items, wtp_list, properties
        json.close();
    json.open("$defs");
    for (const auto &[name, type] : {std::pair("access_point", uint8_t{DEVICE_ACCESS_POINT}),
                                     {"switch", uint8_t{DEVICE_SWITCH}},
                                     {"other", uint8_t{DEVICE_OTHER}}}) {
        json.open(name);
        print_schema_of(json, record_members(type, false));
        json.close();
    }
    json.close();
    put("\n}\n");
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

int main(int argc, char **argv)
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
