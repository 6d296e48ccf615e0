// SPDX-License-Identifier: MIT
// An inventory as CSV (RFC 4180), one row a device, for spreadsheets.
#include "common/output_file.h"
#include "export/formats.h"
#include "export/text.h"

#include <algorithm>
#include <ctime>
#include <iterator>
#include <vector>

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

#define NAME_AND_COMMA(name) name,
#define TEXT_AND_COMMA(name) #name,
enum class Column { EXPORT_COLUMNS(NAME_AND_COMMA) };
constexpr std::string_view NAMES[] = {EXPORT_COLUMNS(TEXT_AND_COMMA)};

std::string cell_of(const WtpRecord &wtp, Column column)
{
    // clang-format off
    switch (column) {
    case Column::mac: return mac_name(wtp.mac);
    case Column::name: return std::string(wtp.name);
    case Column::kind: return std::string(kind_name(wtp.wtp_type));
    case Column::model: return std::string(wtp.model);
    case Column::sku: return std::string(wtp.sku);
    case Column::serial: return std::string(wtp.sn);
    case Column::location: return location(wtp);
    case Column::address: return ipv4_name(wtp.ip);
    case Column::port: return number(wtp.port);
    case Column::mask: return ipv4_name(wtp.cur_cfg.mask);
    case Column::gateway: return ipv4_name(wtp.cur_cfg.gateway);
    case Column::dns1: return ipv4_name(wtp.cur_cfg.dns1);
    case Column::dns2: return ipv4_name(wtp.cur_cfg.dns2);
    case Column::managed: return yes_or_no(wtp.managed != 0);
    case Column::state: return state_name(wtp);
    case Column::firmware: return std::string(wtp.sw_ver);
    case Column::new_firmware: return std::string(wtp.new_fw_ver);
    case Column::upgrade_state: return number(wtp.upg_state);
    case Column::progress: return number(wtp.progress);
    case Column::uptime: return number(wtp.uptime);
    case Column::joined: return when(wtp.join_time);
    case Column::last_active: return when(wtp.last_time);
    case Column::changed: return when(wtp.change_time);
    case Column::memory_used: return number(wtp.mem.used);
    case Column::memory_total: return number(wtp.mem.total);
    case Column::radios: return number(wtp.radio.size());
    case Column::channels: return channels(wtp);
    case Column::stations: return number(count_stations(wtp));
    case Column::ports: return number(wtp.switch_port.size());
    case Column::ports_up: return number(ports_up(wtp));
    case Column::poe_budget: return number(wtp.poe_global.power_budget);
    case Column::poe_used: return number(wtp.poe_global.allocated_power);
    }
    // clang-format on
    return "";
}

// The columns of a list of their names, which the option has checked.
std::vector<Column> columns_of(std::string_view list)
{
    std::vector<Column> columns;
    while (true) {
        const size_t comma = list.find(',');
        const auto *name = std::find(std::begin(NAMES), std::end(NAMES), list.substr(0, comma));
        columns.push_back(static_cast<Column>(name - NAMES));
        if (comma == std::string_view::npos)
            return columns;
        list.remove_prefix(comma + 1);
    }
}

// What a spreadsheet would take for a formula is kept from it by an apostrophe, which it does not
// show. Control characters, line ends among them, are replaced.
std::string csv_cell(std::string_view text)
{
    static constexpr std::string_view FORMULA = "=+-@\t\r";
    std::string cell;
    if (!text.empty() && FORMULA.find(text[0]) != std::string_view::npos)
        cell = "'";
    append_clean(cell, text);
    if (cell.find_first_of(",\"") == std::string::npos)
        return cell;
    std::string text_in_quotes = "\"";
    for (const char c : cell)
        text_in_quotes += c == '"' ? std::string("\"\"") : std::string(1, c);
    return text_in_quotes + '"';
}

constexpr const char *DEFAULT_COLUMNS =
    "mac,name,kind,model,serial,location,address,managed,state,firmware,uptime,stations";

} // namespace

static bool write_csv(Devices &devices, const ExportSettings &settings)
{
    OutputFile file(settings.output, MODE_PUBLIC);
    const std::string_view list = settings.columns != nullptr ? settings.columns : DEFAULT_COLUMNS;
    const std::vector<Column> columns = columns_of(list);
    file.put(list);
    file.put("\r\n");
    devices.for_each([&](const WtpRecord &wtp) {
        std::string line;
        for (const Column column : columns) {
            line += csv_cell(cell_of(wtp, column));
            line += ',';
        }
        line.pop_back();
        file.put(line + "\r\n");
    });
    file.finish();
    return true;
}

const Format csv_format = {WTP_FILTER_ALL, write_csv};
