// SPDX-License-Identifier: MIT
#include "common/table.h"

#include "common/plain_text.h"
#include "common/utf8.h"

#include <algorithm>

enum : size_t { NAME_MAX_SHOWN = 32, VERSION_MAX_SHOWN = 24, LAST_MIN = 20 };

// Characters, not bytes.
static size_t width_of(std::string_view text)
{
    return static_cast<size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<uint8_t>(c) & 0xC0) != 0x80; }));
}

std::string shortened(std::string_view text, size_t most)
{
    std::string plain = plain_text(text);
    if (width_of(plain) <= most)
        return plain;
    size_t end = 0;
    for (size_t characters = 0; characters < most - 3; characters++)
        end += first_character(std::string_view(plain).substr(end)).length;
    return plain.substr(0, end) + "...";
}

std::string name_text(const std::string &name)
{
    return name.empty() ? "-" : shortened(name, NAME_MAX_SHOWN);
}

std::string version_text(const std::string &version)
{
    return version.empty() ? "-" : shortened(version, VERSION_MAX_SHOWN);
}

// The text in lines of at most so many characters, between words where there are any.
static std::vector<std::string> wrapped(std::string text, size_t width)
{
    std::vector<std::string> lines;
    while (width_of(text) > width) {
        size_t space = text.rfind(' ', width);
        if (space == std::string::npos || space == 0)
            space = text.find(' ');
        if (space == std::string::npos)
            break;
        lines.push_back(text.substr(0, space));
        text.erase(0, space + 1);
    }
    lines.push_back(std::move(text));
    return lines;
}

std::vector<std::string> table_lines(const std::vector<TableRow> &rows, size_t number_column,
                                     size_t columns)
{
    const size_t last = rows[0].size() - 1;
    std::vector<size_t> widths(last);
    size_t before = 0; // the last column
    for (size_t i = 0; i < last; i++) {
        for (const TableRow &row : rows)
            widths[i] = std::max(widths[i], width_of(row[i]));
        before += widths[i] + 2;
    }
    const size_t room = std::max<size_t>(columns > before ? columns - before : 0, LAST_MIN);
    std::vector<std::string> lines;
    for (const TableRow &row : rows) {
        std::string line;
        for (size_t i = 0; i < last; i++) {
            const std::string pad(widths[i] - width_of(row[i]), ' ');
            line += (i == number_column ? pad + row[i] : row[i] + pad) + "  ";
        }
        for (const std::string &part : wrapped(row[last], room)) {
            line += part;
            line.erase(line.find_last_not_of(' ') + 1);
            lines.push_back(line);
            line.assign(before, ' ');
        }
    }
    return lines;
}
