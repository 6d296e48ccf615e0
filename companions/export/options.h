// SPDX-License-Identifier: MIT
// The command line of zov-export.
#pragma once

#include "common/command_line.h"
#include "common/connection.h"
#include "util/mac.h"

#include <string_view>

struct ExportSettings : Place {
    const char *format = nullptr;
    MacList macs;               // these devices; none: all
    const char *name = nullptr; // and of these the ones with such a name
    const char *output = nullptr;
    const char *directory = nullptr;
    const char *columns = nullptr; // of csv, joined by commas
};

inline constexpr char EXPORT_FORMATS[] = "json ndjson cfg csv prometheus dot";

// Those of csv.cpp, in its order.
inline constexpr char EXPORT_COLUMNS[] =
    "mac name kind model sku serial location address port mask gateway dns1 dns2 managed state "
    "firmware new_firmware upgrade_state progress uptime joined last_active changed memory_used "
    "memory_total radios channels stations ports ports_up poe_budget poe_used";

// Whether each item of a list, joined by commas, is one of the words, which are parted by blanks.
constexpr bool has_words_only(std::string_view list, std::string_view words)
{
    while (true) {
        const size_t comma = list.find(',');
        bool known = false;
        for (std::string_view rest = words; !rest.empty() && !known;) {
            const size_t blank = rest.find(' ');
            known = rest.substr(0, blank) == list.substr(0, comma);
            rest.remove_prefix(blank == std::string_view::npos ? rest.size() : blank + 1);
        }
        if (!known || comma == std::string_view::npos)
            return known;
        list.remove_prefix(comma + 1);
    }
}

// clang-format off
inline constexpr Option<ExportSettings> EXPORT_OPTIONS[] = {
    {{"format", "FORMAT", "what to write", EXPORT_FORMATS},
     [](const char *text, ExportSettings &to) {
         return strchr(text, ',') == nullptr && has_words_only(to.format = text, EXPORT_FORMATS);
     }},
    {{"mac", "LIST", "only the devices with these addresses, joined by commas"},
     [](const char *text, ExportSettings &to) {
         return parse_mac_list(text, to.macs) && !to.macs.empty();
     }},
    {{"name", "GLOB", "only the devices with such a name, for instance 'ap-floor1-*'"},
     [](const char *text, ExportSettings &to) { return (to.name = text, true); }},
    {{"output", "FILE", "write to this file instead of standard output"},
     [](const char *text, ExportSettings &to) { return *(to.output = text) != '\0'; }},
    {{"directory", "DIR", "cfg: write a file for each device there, named by its address"},
     [](const char *text, ExportSettings &to) { return *(to.directory = text) != '\0'; }},
    {{"columns", "LIST", "csv: these columns, joined by commas", EXPORT_COLUMNS},
     [](const char *text, ExportSettings &to) {
         return has_words_only(to.columns = text, EXPORT_COLUMNS);
     }},
    PLACE_OPTIONS,
};
// clang-format on

inline constexpr ProgramText EXPORT_PROGRAM = {
    "zov-export",
    "",
    "Reads the controller's device list once and writes it in another format: json, ndjson,\n"
    "cfg (configuration files), csv, prometheus (metrics) or dot (a graph).\n",
};
