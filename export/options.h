// SPDX-License-Identifier: MIT
// The options of zov-export.
#pragma once

#include "formats.h"

inline bool take_format(const char *text, ExportSettings &settings)
{
    for (const Format *format :
         {&JSON_FORMAT, &NDJSON_FORMAT, &CFG_FORMAT, &CSV_FORMAT, &PROMETHEUS_FORMAT, &DOT_FORMAT})
        if (strcmp(format->name, text) == 0)
            settings.format = format;
    return settings.format != nullptr && strcmp(settings.format->name, text) == 0;
}

// clang-format off
inline constexpr Option<ExportSettings> EXPORT_OPTIONS[] = {
    {{"format", "FORMAT", "json, ndjson, cfg, csv, prometheus or dot",
      "json ndjson cfg csv prometheus dot"}, take_format},
    {{"mac", "LIST", "only the devices with these addresses, joined by commas"},
     [](const char *text, ExportSettings &to) { return parse_mac_list(text, to.macs) && !to.macs.empty(); }},
    {{"name", "GLOB", "only the devices with such a name, for instance 'ap-floor1-*'"},
     [](const char *text, ExportSettings &to) { return (to.name = text, true); }},
    {{"output", "FILE", "write to this file instead of standard output"},
     [](const char *text, ExportSettings &to) { return *(to.output = text) != '\0'; }},
    {{"directory", "DIR", "cfg: write a file for each device there, named by its address"},
     [](const char *text, ExportSettings &to) { return *(to.directory = text) != '\0'; }},
    {{"columns", "LIST", "csv: these columns, joined by commas"},
     [](const char *text, ExportSettings &to) { return (check_csv_columns(to.columns = text), true); }},
    PLACE_OPTIONS,
};
// clang-format on

inline constexpr ProgramText EXPORT_PROGRAM = {
    "zov-export",
    "",
    "Reads the controller's device list once and writes it in another format.\n",
};
