// SPDX-License-Identifier: MIT
// The devices as a table for people.
#include "common/table.h"
#include "common/output_file.h"
#include "course/progress_bar.h"
#include "export/formats.h"

#include <algorithm>
#include <cstdlib>
#include <unistd.h>

// What the other columns and the spaces between all need, more or less.
static constexpr size_t COLUMNS_OF_OTHERS = 85, COLUMNS_OF_PIPE = 1000;

// The two largest units: "14d 17h", "5h 2m", "3m".
static std::string uptime_text(uint32_t seconds)
{
    const uint32_t minutes = seconds / 60, hours = minutes / 60, days = hours / 24;
    if (days > 0)
        return std::to_string(days) + "d " + std::to_string(hours % 24) + "h";
    if (hours > 0)
        return std::to_string(hours) + "h " + std::to_string(minutes % 60) + "m";
    return std::to_string(minutes) + "m";
}

static TableRow row_of(const WtpRecord &wtp, size_t name_max)
{
    const bool online = wtp.state == WTP_ONLINE;
    return {wtp.name.empty() ? "-" : shortened(wtp.name, name_max),
            mac_name(wtp.mac),
            kind_name(wtp.wtp_type),
            version_text(std::string(wtp.model)),
            version_text(std::string(wtp.sw_ver)),
            wtp.radio.empty() ? "-" : std::to_string(count_stations(wtp)),
            online ? uptime_text(wtp.uptime) : "-",
            is_in_upgrade(wtp) ? "upgrading" : state_name(wtp)};
}

// The state, which ends a line, in its colour.
static std::string coloured(const std::string &line)
{
    const size_t at = line.rfind(' ') + 1;
    const std::string state = line.substr(at);
    const char *colour = state == "online" ? "32" : state == "upgrading" ? "33" : "31";
    return line.substr(0, at) + "\x1b[" + colour + "m" + state + "\x1b[m";
}

static bool write_table(Devices &devices, const ExportSettings &settings)
{
    OutputFile file(settings.output, MODE_PUBLIC);
    const bool is_terminal = settings.output == nullptr && isatty(STDOUT_FILENO) != 0;
    const size_t columns = is_terminal ? columns_of(STDOUT_FILENO) : COLUMNS_OF_PIPE;
    const size_t name_max =
        std::clamp<size_t>(columns > COLUMNS_OF_OTHERS ? columns - COLUMNS_OF_OTHERS : 0, 12, 32);
    const char *no_color = getenv("NO_COLOR");
    const bool has_colour = is_terminal && (no_color == nullptr || *no_color == '\0');
    std::vector<TableRow> rows = {
        {"NAME", "MAC", "KIND", "MODEL", "FIRMWARE", "STATIONS", "UPTIME", "STATE"}};
    devices.for_each([&](const WtpRecord &wtp) { rows.push_back(row_of(wtp, name_max)); });
    const std::vector<std::string> lines = table_lines(rows, 5, COLUMNS_OF_PIPE);
    for (size_t i = 0; i < lines.size(); i++)
        file.put((i > 0 && has_colour ? coloured(lines[i]) : lines[i]) + "\n");
    file.finish();
    return true;
}

const Format table_format = {WTP_FILTER_ALL & ~uint32_t{WTP_FILTER_CFG}, write_table};
