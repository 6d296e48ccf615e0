// SPDX-License-Identifier: MIT
// zov-check: checks configuration files without a controller.
#include "check/checker.h"
#include "check/options.h"
#include "common/output_file.h"

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
    Checker checker(settings);
    Json all = Json::array();
    bool good = true;
    for (const char *name : names) {
        const std::vector<Diagnostic> diagnostics = checker.check(name);
        for (const Diagnostic &one : diagnostics) {
            good &= !one.is_error;
            if (is_json)
                all.push_back(json_of(one));
        }
        if (!is_json)
            fputs(text_of(diagnostics).c_str(), stderr);
        if (settings.items)
            checker.print_items(names.size() > 1 ? name : nullptr);
    }
    if (is_json)
        print_document(all);
    return good ? 0 : 1;
}

int main(int argc, char **argv)
{
    return run_program(CHECK_PROGRAM, argc, argv, run);
}
