// SPDX-License-Identifier: MIT
// An inventory as CSV (RFC 4180), one row a device, for spreadsheets.
#include "common/output_file.h"
#include "export/formats.h"
#include "export/text.h"

#include <ctime>

namespace {

std::string number(uint32_t value)
{
    return std::to_string(value);
}

std::string yes_or_no(bool value)
{
    return value ? "yes" : "no";
}

// As ISO 8601 has it, in UTC; nothing for what has not happened.
std::string when(uint32_t seconds)
{
    char text[32];
    const time_t time = seconds;
    tm parts = {};
    gmtime_r(&time, &parts);
    return seconds == 0 ? "" : std::string(text, strftime(text, sizeof text, "%FT%TZ", &parts));
}

// The parts joined by blanks.
template <class Items, class Part> std::string join(const Items &items, Part part)
{
    std::string text;
    for (const auto &item : items) {
        if (!text.empty())
            text += ' ';
        text += part(item);
    }
    return text;
}

std::string channels(const WtpRecord &wtp)
{
    return join(wtp.radio, [](const auto &radio) { return std::to_string(radio.cur_cfg.channel); });
}

std::string location(const WtpRecord &wtp)
{
    return wtp.wtp_cfg == nullptr ? "" : std::string(wtp.wtp_cfg->location);
}

uint32_t ports_up(const WtpRecord &wtp)
{
    uint32_t count = 0;
    for (const SwitchPortInfo &port : wtp.switch_port)
        count += port.link_status != 0;
    return count;
}

using Wtp = const WtpRecord &;

constexpr struct Column {
    std::string_view name;
    std::string (*cell)(Wtp wtp);
} COLUMNS[] = {
    {"mac", [](Wtp wtp) { return mac_name(wtp.mac); }},
    {"name", [](Wtp wtp) { return std::string(wtp.name); }},
    {"kind", [](Wtp wtp) { return std::string(kind_name(wtp)); }},
    {"model", [](Wtp wtp) { return std::string(wtp.model); }},
    {"sku", [](Wtp wtp) { return std::string(wtp.sku); }},
    {"serial", [](Wtp wtp) { return std::string(wtp.sn); }},
    {"location", location},
    {"address", [](Wtp wtp) { return ipv4_name(wtp.ip); }},
    {"port", [](Wtp wtp) { return number(wtp.port); }},
    {"mask", [](Wtp wtp) { return ipv4_name(wtp.cur_cfg.mask); }},
    {"gateway", [](Wtp wtp) { return ipv4_name(wtp.cur_cfg.gateway); }},
    {"dns1", [](Wtp wtp) { return ipv4_name(wtp.cur_cfg.dns1); }},
    {"dns2", [](Wtp wtp) { return ipv4_name(wtp.cur_cfg.dns2); }},
    {"managed", [](Wtp wtp) { return yes_or_no(wtp.managed != 0); }},
    {"state", state_name},
    {"firmware", [](Wtp wtp) { return std::string(wtp.sw_ver); }},
    {"new_firmware", [](Wtp wtp) { return std::string(wtp.new_fw_ver); }},
    {"upgrade_state", [](Wtp wtp) { return number(wtp.upg_state); }},
    {"progress", [](Wtp wtp) { return number(wtp.progress); }},
    {"uptime", [](Wtp wtp) { return number(wtp.uptime); }},
    {"joined", [](Wtp wtp) { return when(wtp.join_time); }},
    {"last_active", [](Wtp wtp) { return when(wtp.last_time); }},
    {"changed", [](Wtp wtp) { return when(wtp.change_time); }},
    {"memory_used", [](Wtp wtp) { return number(wtp.mem.used); }},
    {"memory_total", [](Wtp wtp) { return number(wtp.mem.total); }},
    {"radios", [](Wtp wtp) { return number(wtp.radio.size()); }},
    {"channels", channels},
    {"stations", [](Wtp wtp) { return number(count_stations(wtp)); }},
    {"ports", [](Wtp wtp) { return number(wtp.switch_port.size()); }},
    {"ports_up", [](Wtp wtp) { return number(ports_up(wtp)); }},
    {"poe_budget", [](Wtp wtp) { return number(wtp.poe_global.power_budget); }},
    {"poe_used", [](Wtp wtp) { return number(wtp.poe_global.allocated_power); }},
};

// The option knows the same columns.
static_assert([] {
    std::string_view names = EXPORT_COLUMNS;
    for (const Column &column : COLUMNS) {
        if (!names.starts_with(column.name))
            return false;
        names.remove_prefix(column.name.size());
        if (names.starts_with(' '))
            names.remove_prefix(1);
    }
    return names.empty();
}());

// Calls action(column) for each name of a list.
template <class Action> void for_each_column(std::string_view list, Action action)
{
    while (true) {
        const size_t comma = list.find(',');
        const std::string_view name = list.substr(0, comma);
        const Column *found = COLUMNS;
        for (const Column &column : COLUMNS)
            if (column.name == name)
                found = &column;
        action(*found);
        if (comma == std::string_view::npos)
            return;
        list.remove_prefix(comma + 1);
    }
}

// What a spreadsheet would take for a formula is kept from it by an apostrophe, which it does not
// show. Control characters, line ends among them, are replaced.
std::string cell_of(std::string_view text)
{
    static constexpr std::string_view FORMULA = "=+-@\t\r";
    std::string cell;
    if (!text.empty() && FORMULA.find(text[0]) != std::string_view::npos)
        cell = "'";
    append_clean(cell, text);
    if (cell.find_first_of(",\"") == std::string::npos)
        return cell;
    std::string quoted = "\"";
    for (const char c : cell)
        quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + '"';
}

constexpr const char *DEFAULT_COLUMNS =
    "mac,name,kind,model,serial,location,address,managed,state,firmware,uptime,stations";

} // namespace

static void write_csv(Devices &devices, const ExportSettings &settings)
{
    OutputFile file(settings.output, MODE_PUBLIC);
    const std::string_view columns =
        settings.columns != nullptr ? settings.columns : DEFAULT_COLUMNS;
    file.put(columns);
    file.put("\r\n");
    devices.for_each([&](const WtpRecord &wtp) {
        std::string line;
        for_each_column(columns, [&](const Column &column) {
            line += cell_of(column.cell(wtp));
            line += ',';
        });
        line.pop_back();
        file.put(line + "\r\n");
    });
    file.finish();
}

const Format CSV_FORMAT = {"csv", WTP_FILTER_ALL, write_csv};
