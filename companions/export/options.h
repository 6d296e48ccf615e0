// SPDX-License-Identifier: MIT
// The command line of zov-export.
#pragma once

#include "common/command_line.h"
#include "common/connection.h"
#include "common/selection.h"

#include <string_view>

struct ExportSettings : Endpoint, Selection {
    const char *format = nullptr;
    const char *output = nullptr;
    const char *directory = nullptr;
    const char *columns = nullptr; // of csv, joined by commas
    const char *around = nullptr;  // of dot: the name or address of a switch
    bool partial = false;
    const char *metrics = nullptr; // of prometheus: a word of METRICS_NAMES; null: device
};

// Every format; its row is NAME_format in its own file.
// clang-format off
#define EXPORT_FORMATS(FORMAT)                                                                     \
    FORMAT(json) FORMAT(ndjson) FORMAT(cfg) FORMAT(csv) FORMAT(prometheus) FORMAT(dot)              \
    FORMAT(table) FORMAT(macs)

// Every column of csv.
#define EXPORT_COLUMNS(COLUMN)                                                                     \
    COLUMN(mac) COLUMN(name) COLUMN(kind) COLUMN(model) COLUMN(sku)                                \
    COLUMN(serial) COLUMN(location) COLUMN(address) COLUMN(port) COLUMN(mask)                      \
    COLUMN(gateway) COLUMN(dns1) COLUMN(dns2) COLUMN(managed) COLUMN(state)                        \
    COLUMN(firmware) COLUMN(new_firmware) COLUMN(upgrade_state) COLUMN(progress) COLUMN(uptime)    \
    COLUMN(joined) COLUMN(last_active) COLUMN(changed) COLUMN(memory_used) COLUMN(memory_total)    \
    COLUMN(radios) COLUMN(channels) COLUMN(stations) COLUMN(ports) COLUMN(ports_up)                \
    COLUMN(poe_budget) COLUMN(poe_used)
// clang-format on

// The names in a text, separated by spaces.
#define SPACE_AND_NAME(name) " " #name
inline constexpr const char *FORMAT_NAMES = (EXPORT_FORMATS(SPACE_AND_NAME)) + 1;
inline constexpr const char *COLUMN_NAMES = (EXPORT_COLUMNS(SPACE_AND_NAME)) + 1;

inline constexpr const char *METRICS_NAMES = "fleet device all";

inline bool take_format(const char *text, ExportSettings &to)
{
    to.format = text;
    return is_word_of(text, FORMAT_NAMES);
}

inline bool take_columns(const char *text, ExportSettings &to)
{
    to.columns = text;
    for (std::string_view list = text;;) {
        const size_t comma = list.find(',');
        if (!is_word_of(list.substr(0, comma), COLUMN_NAMES))
            return false;
        if (comma == std::string_view::npos)
            return true;
        list.remove_prefix(comma + 1);
    }
}

inline bool take_output(const char *text, ExportSettings &to)
{
    to.output = text;
    return *text != '\0';
}

inline bool take_directory(const char *text, ExportSettings &to)
{
    to.directory = text;
    return *text != '\0';
}

// clang-format off
inline constexpr Option<ExportSettings> EXPORT_OPTIONS[] = {
    {{.name = "format", .argument = "FORMAT", .help = "what to write", .values = FORMAT_NAMES,
      .meanings = "a document,a device a line,configuration files,for spreadsheets,metrics,"
                  "a graph,for people,addresses for a command line"},
     take_format},
    SELECTION_OPTIONS,
    {{"output", "FILE", "write to this file instead of standard output"}, take_output},
    {{"directory", "DIR", "cfg: write a file for each device there, named by its address"}, take_directory},
    {{"metrics", "WHICH", "prometheus: how much of them (device)", METRICS_NAMES},
     [](const char *text, ExportSettings &to) { return take_word(text, METRICS_NAMES, to.metrics); }},
    {{"around", "SWITCH", "dot: only the switch of this name or address, and its neighbours"},
     [](const char *text, ExportSettings &to) { return take_text(text, to.around); }},
    {{"partial", nullptr, "cfg: exit with 0 also when settings cannot be sent again"},
     [](const char *, ExportSettings &to) { return take_flag(to.partial); }},
    {{"columns", "LIST", "csv: these columns, joined by commas", COLUMN_NAMES}, take_columns},
    ENDPOINT_OPTIONS,
};
// clang-format on

inline constexpr ProgramInfo EXPORT_PROGRAM = {
    "zov-export",
    "",
    "Reads the controller's device list once and writes it in another format: json, ndjson,\n"
    "cfg (configuration files), csv, prometheus (metrics), dot (a graph), table (for people)\n"
    "or macs (addresses for a command line).\n",
};
