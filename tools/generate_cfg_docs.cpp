// SPDX-License-Identifier: MIT
// Writes what users read of the key tables, to standard output: the JSON Schemas of configuration
// files, and the manual page zov-cfg(5) in mdoc.
//
// usage: generate_cfg_docs schema-ap|schema-switch|man TEMPLATE
#include "documents/settings_tree.h"
#include "tools/doc_writer.h"
#include "tools/setting_texts.h"
#include "util/output.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

using std::cout;
using std::string;
using std::string_view;

static const SettingText &text_of(string_view path)
{
    const SettingText *text = find_setting_text(path);
    if (text != nullptr)
        return *text;
    fail("settings.def: no text for '%s'\n", string(path).c_str());
    exit(1);
}

// --- What a row accepts, in words ----------------------------------------------------------------

// The largest value or length that is sent unchanged.
static int32_t largest(const ConfigKey &row)
{
    if (row.kind() == json_string && row.max < 0)
        return CONFIG_VALUE_BYTES_MAX;
    return row.form == FORM_U16 ? std::min<int32_t>(row.max, UINT16_MAX) : row.max;
}

static string value_words(const ConfigKey &row)
{
    const string limits = std::to_string(row.min) + " to " + std::to_string(largest(row));
    switch (row.form) {
    case FORM_U32:
    case FORM_U16:
        return row.min == 0 && row.max == 1 ? "integer, 0 or 1" : "integer, " + limits;
    case FORM_IPV4:
        return "IPv4 address";
    case FORM_SERVER_ADDRESS:
        return "IPv4 address, or empty for none";
    case FORM_IP_SETTINGS:
        return "address/mask/gateway";
    case FORM_MAC_LIST:
        return "MAC address";
    case FORM_DATA_RATE:
        return "data rate";
    case FORM_TEXT:
    case FORM_HOST_LIST:
    case FORM_PASSWORD_DIGEST:
        break;
    }
    return "text, " + limits + " bytes";
}

static string type_words(const SettingNode &setting)
{
    const string words = value_words(*setting.row);
    return setting.is_array()
               ? "list, at most " + std::to_string(setting.elements_max()) + " elements: " + words
               : words;
}

// The setting's description and what its form adds.
static string describe(const SettingNode &setting, DeviceKind kind)
{
    const ConfigKey &row = *setting.row;
    string text(text_of(setting.path).description);
    if (row.form == FORM_PASSWORD_DIGEST)
        text += " Only an MD5 digest of it is sent.";
    if (row.form == FORM_SERVER_ADDRESS)
        text += " Other texts, host names too, are sent as 0.0.0.0.";
    if (row.form == FORM_MAC_LIST)
        text += " Group addresses and 00:00:00:00:00:00 are refused.";
    if (row.has_distinct_elements(kind))
        text += " An element that is given twice is refused.";
    if (row.form == FORM_U16 && row.max > UINT16_MAX)
        text += " Greater numbers would be cut to their low 16 bits.";
    return text;
}

// --- JSON Schema ---------------------------------------------------------------------------------

using Json = nlohmann::ordered_json;

// Defined once for all objects. What is in a remark is read all the same, and an object without
// members refused.
static const Json COMMENT_SCHEMA = {{"$ref", "#/$defs/comment"}};
static const Json COMMENT_DEFINITION = {{"title", "Comment"},
                                        {"description", "A remark of any type. It is not sent."},
                                        {"minProperties", 1},
                                        {"additionalProperties", COMMENT_SCHEMA},
                                        {"items", COMMENT_SCHEMA}};

// An object in the place of an element that is left as it is.
static const Json COMMENT_ONLY_SCHEMA = {{"type", "object"},
                                         {"properties", {{"comment", COMMENT_SCHEMA}}},
                                         {"required", {"comment"}},
                                         {"additionalProperties", false}};

// The texts that a form accepts; empty when any will do. Server addresses are held to more than zov
// does, which sends other texts as no address.
static string pattern(ConfigForm form)
{
    const string octet = "0*(25[0-5]|2[0-4][0-9]|1?[0-9]?[0-9])";
    const string address = octet + "(\\." + octet + "){3}";
    switch (form) {
    case FORM_IPV4:
        return "^" + address + "$";
    case FORM_SERVER_ADDRESS:
        return "^(" + address + ")?$";
    case FORM_IP_SETTINGS:
        return "^" + address + "(/" + address + "){2}$";
    case FORM_MAC_LIST:
        return "^0*[0-9A-Fa-f]?[02468ACEace](:0*[0-9A-Fa-f]{1,2}){5}$";
    case FORM_DATA_RATE:
        return "^(auto|MCS0*([12]?[0-9]|3[01])|VHTMCS0*[0-9]"
               "|0*[1-9][0-9]{0,5}(\\.([0-9]|0*))?M|0+\\.[2-9]M)$";
    case FORM_U32:
    case FORM_U16:
    case FORM_TEXT:
    case FORM_HOST_LIST:
    case FORM_PASSWORD_DIGEST:
        break;
    }
    return "";
}

// What is in no text of a form that is sent as it stands. Some programs let a line end follow what
// a pattern matches.
static string forbidden_pattern(ConfigForm form)
{
    switch (form) {
    case FORM_MAC_LIST:
        return "^[0:]*$|\\n";
    case FORM_IPV4:
    case FORM_SERVER_ADDRESS:
    case FORM_IP_SETTINGS:
    case FORM_DATA_RATE:
        return "\\n";
    case FORM_U32:
    case FORM_U16:
    case FORM_TEXT:
    case FORM_HOST_LIST:
    case FORM_PASSWORD_DIGEST:
        break;
    }
    return "\\x00";
}

static void add_value_schema(Json &schema, const ConfigKey &row)
{
    if (row.kind() == json_integer) {
        schema["type"] = "integer";
        schema["minimum"] = row.min;
        schema["maximum"] = largest(row);
        return;
    }
    schema["type"] = "string";
    if (row.min > 0)
        schema["minLength"] = row.min;
    schema["maxLength"] = largest(row); // in characters, of which none is shorter than a byte
    if (const string texts = pattern(row.form); !texts.empty())
        schema["pattern"] = texts;
    schema["not"]["pattern"] = forbidden_pattern(row.form);
}

static Json member_schema(const SettingNode &node, DeviceKind kind);

// An object may have the members that are described, and a comment.
static void add_type_schema(Json &schema, const SettingNode &node, DeviceKind kind)
{
    if (node.row != nullptr)
        return add_value_schema(schema, *node.row);
    schema["type"] = "object";
    schema["minProperties"] = 1;
    schema["additionalProperties"] = false;
    Json &properties = schema["properties"];
    properties["comment"] = COMMENT_SCHEMA;
    for (const SettingNode &member : node.members)
        properties[string(member.name)] = member_schema(member, kind);
}

static Json member_schema(const SettingNode &node, DeviceKind kind)
{
    const SettingText &text = text_of(node.path);
    Json schema = {{"title", text.title},
                   {"description", node.row == nullptr ? string(text.description)
                                                       : describe(node, kind) +
                                                             " Value: " + type_words(node) + "."}};
    if (!node.is_array()) {
        add_type_schema(schema, node, kind);
        return schema;
    }
    schema["type"] = "array";
    if (node.elements_min() > 0)
        schema["minItems"] = node.elements_min();
    schema["maxItems"] = node.elements_max();
    if (node.row != nullptr && node.row->has_distinct_elements(kind))
        schema["uniqueItems"] = true;
    Json element;
    add_type_schema(element, node, kind);
    const bool is_by_port = node.is_by_port();
    if (is_by_port)
        element["required"] = {"port"};
    if (is_by_port || (node.row != nullptr && node.row->element_size() == 0)) // left as it is
        schema["items"]["anyOf"] = {element, COMMENT_ONLY_SCHEMA};
    else
        schema["items"] = element;
    return schema;
}

static void print_schema(const SettingNode &root, DeviceKind kind)
{
    const string device = kind == DEVICE_SWITCH ? "a switch" : "an access point";
    const Json schema = {
        {"$schema", "https://json-schema.org/draft/2020-12/schema"},
        {"title", "Configuration file of " + device},
        {"description", "Settings for zov cfg --file; see zov-cfg(5). It is stricter than zov, "
                        "which skips members that are not described here: an object may have no "
                        "others but comment."},
        {"type", "object"},
        {"required", {"wtp_cfg"}},
        {"additionalProperties", false},
        {"properties",
         {{"comment", COMMENT_SCHEMA},
          {"$schema",
           {{"title", "Schema"},
            {"description", "The place of this schema, for editors. It is not sent."},
            {"type", "string"}}},
          {"wtp_cfg", member_schema(root.members[0], kind)}}},
        {"$defs", {{"comment", COMMENT_DEFINITION}}}};
    put(schema.dump(2), "\n");
}

// --- Manual page ---------------------------------------------------------------------------------

// The node's own settings, then the groups below it.
static void print_manual_group(const SettingNode &node, DeviceKind kind)
{
    const SettingText &group = text_of(node.path);
    put(".Ss ", group.title, " (", node.path, ")\n");
    put_sentences(group.description);
    put(".Bl -tag -width Ds\n");
    for (const SettingNode &member : node.members) {
        if (member.row == nullptr)
            continue;
        put(".It Va ", member.path, "\n");
        put_sentences(string(text_of(member.path).title) + " (" + type_words(member) + ").");
        put_sentences(describe(member, kind));
    }
    put(".El\n");
    for (const SettingNode &member : node.members)
        if (member.row == nullptr)
            print_manual_group(member, kind);
}

// The template, with the settings in the place of the comment that names them.
static int print_manual(const char *name, const SettingNode &access_point,
                        const SettingNode &of_switch)
{
    std::ifstream file(name);
    for (string line; std::getline(file, line);) {
        if (line != ".\\\" The settings stand here.") {
            put(line, "\n");
            continue;
        }
        put(".Sh SETTINGS OF ACCESS POINTS\n");
        print_manual_group(access_point.members[0], DEVICE_ACCESS_POINT);
        put(".Sh SETTINGS OF SWITCHES\n");
        print_manual_group(of_switch.members[0], DEVICE_SWITCH);
    }
    return file.eof() ? 0 : fail("generate_cfg_docs: cannot read %s\n", name);
}

static int run(int argc, char **argv)
{
    const string what = argc > 1 ? argv[1] : "";
    const SettingNode access_point = settings_tree(DEVICE_ACCESS_POINT);
    const SettingNode of_switch = settings_tree(DEVICE_SWITCH);
    int status = 0;
    if (what == "schema-ap")
        print_schema(access_point, DEVICE_ACCESS_POINT);
    else if (what == "schema-switch")
        print_schema(of_switch, DEVICE_SWITCH);
    else if (what == "man" && argc == 3)
        status = print_manual(argv[2], access_point, of_switch);
    else
        status = fail("usage: generate_cfg_docs schema-ap|schema-switch|man TEMPLATE\n");
    return cout.flush() ? status : 1;
}

int main(int argc, char **argv)
{
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        return fail("generate_cfg_docs: %s\n", error.what());
    }
}
