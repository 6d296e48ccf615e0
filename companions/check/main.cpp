// SPDX-License-Identifier: MIT
// zov-check: checks configuration files without a controller.
#include "check/options.h"
#include "common/output_file.h"
#include "common/plain_text.h"
#include "documents/checker.h"

#include <cstdio>
#include <nlohmann/json.hpp>

using Json = nlohmann::ordered_json;

static Json json_of(const Diagnostic &one)
{
    return {{"file", one.file},
            {"line", one.line == 0 ? Json() : Json(one.line)},
            {"severity", one.is_error ? "error" : "warning"},
            {"path", one.path},
            {"message", one.message}};
}

static void print_document(const Json &diagnostics)
{
    const Json document = {{"diagnostics", diagnostics}};
    OutputFile out("-", 0);
    out.put(document.dump(2, ' ', true, Json::error_handler_t::replace) + "\n");
    out.finish();
}

// The kind that was given, or that the file's comment names, or access points.
static DeviceKind kind_of(const CheckSettings &settings, const json_value &root)
{
    const bool of_switch =
        settings.type != nullptr ? *settings.type == '1' : kind_in_document(root) == DEVICE_SWITCH;
    return of_switch ? DEVICE_SWITCH : DEVICE_ACCESS_POINT;
}

// What would be sent, behind the file's name (if that is not null).
static void print_items(const Checker &checker, const char *name)
{
    OutputFile out("-", 0);
    if (name != nullptr)
        out.put(plain_text(name) + ":\n");
    out.put(items_text(checker.buffer(), checker.items()));
    out.finish();
}

static int run(int argc, char **argv)
{
    CheckSettings settings;
    std::vector<const char *> names;
    if (!read_command_line(argc, argv, CHECK_PROGRAM, CHECK_OPTIONS, settings, names))
        return 0;
    if (names.empty())
        throw UsageError("no file to check, see --help");
    const bool is_json = std::string_view(settings.format) == "json";
    if (is_json && settings.items)
        throw UsageError("--items and --format json exclude each other");
    Checker checker(settings.strict, settings.items);
    Json all = Json::array();
    bool good = true;
    for (const char *name : names) {
        if (const json_value *root = checker.open(name); root != nullptr)
            checker.check(kind_of(settings, *root));
        const std::vector<Diagnostic> diagnostics = checker.take_diagnostics();
        for (const Diagnostic &one : diagnostics) {
            good &= !one.is_error;
            if (is_json)
                all.push_back(json_of(one));
        }
        if (!is_json)
            fputs(text_of(diagnostics).c_str(), stderr);
        if (settings.items)
            print_items(checker, names.size() > 1 ? name : nullptr);
    }
    if (is_json)
        print_document(all);
    return good ? 0 : 1;
}

int main(int argc, char **argv)
{
    return run_program(CHECK_PROGRAM, argc, argv, run);
}
