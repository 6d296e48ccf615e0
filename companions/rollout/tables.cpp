// SPDX-License-Identifier: MIT
#include "rollout/tables.h"

#include "common/output_file.h"
#include "common/plain_text.h"
#include "common/utf8.h"

#include <algorithm>
#include <cmath>

enum : size_t { NAME_MAX_SHOWN = 32, VERSION_MAX_SHOWN = 24 };

using Row = std::vector<std::string>;

// Characters, not bytes.
static size_t width_of(std::string_view text)
{
    return static_cast<size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<uint8_t>(c) & 0xC0) != 0x80; }));
}

// At most so many characters of a text, the last of which tell that it went on.
static std::string shortened(std::string_view text, size_t most)
{
    std::string plain = plain_text(text);
    if (width_of(plain) <= most)
        return plain;
    size_t end = 0;
    for (size_t characters = 0; characters < most - 3; characters++)
        end += first_character(std::string_view(plain).substr(end)).length;
    return plain.substr(0, end) + "...";
}

std::string name_text(const RollDevice &device)
{
    return device.name.empty() ? "-" : shortened(device.name, NAME_MAX_SHOWN);
}

std::string version_text(const std::string &version)
{
    return version.empty() ? "-" : shortened(version, VERSION_MAX_SHOWN);
}

const char *stage_text(const RollDevice &device)
{
    static constexpr const char *TEXTS[] = {"not started", "sent",      "upgrading", "done",
                                            "failed",      "timed out", "skipped"};
    return TEXTS[static_cast<size_t>(device.stage)];
}

// Columns are as wide as their widest text; numbers end, texts begin one below the other. The last
// column is free.
static void print_table(const std::vector<Row> &rows, size_t number_column)
{
    std::vector<size_t> widths(rows[0].size());
    for (const Row &row : rows)
        for (size_t i = 0; i < row.size(); i++)
            widths[i] = std::max(widths[i], width_of(row[i]));
    OutputFile out("-", 0);
    for (const Row &row : rows) {
        std::string line;
        for (size_t i = 0; i < row.size(); i++) {
            const std::string pad(widths[i] - width_of(row[i]), ' ');
            line += (i > 0 ? "  " : "") + (i == number_column ? pad + row[i] : row[i] + pad);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out.put(line + "\n");
    }
    out.finish();
}

static std::string planned(const RollDevice &device)
{
    if (device.stage == UpgradeStage::skipped)
        return "skip: " + plain_text(device.reason);
    if (device.stage == UpgradeStage::upgrading)
        return "follow";
    return device.steps == 1 ? "upgrade" : "upgrade in " + std::to_string(device.steps) + " steps";
}

void print_plan(const Roll &roll)
{
    std::vector<Row> rows = {{"MAC", "NAME", "FROM", "BATCH", "PLAN"}};
    for (const RollDevice &device : roll.devices())
        rows.push_back({mac_to_text(device.mac), name_text(device), version_text(device.from),
                        device.batch == 0 ? "-" : std::to_string(device.batch), planned(device)});
    print_table(rows, 3);
}

void print_summary(const Roll &roll)
{
    std::vector<Row> rows = {{"MAC", "NAME", "FROM", "TO", "RESULT", "SECONDS", ""}};
    for (const RollDevice &device : roll.devices()) {
        const bool timed = device.begun >= 0 && device.ended >= 0;
        rows.push_back({mac_to_text(device.mac), name_text(device), version_text(device.from),
                        version_text(device.to), stage_text(device),
                        timed ? std::to_string(std::lround(device.ended - device.begun)) : "-",
                        plain_text(device.reason)});
    }
    print_table(rows, 5);
}
