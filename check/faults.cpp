// SPDX-License-Identifier: MIT
#include "faults.h"

#include "lines.h"
#include "plain_text.h"

#include <algorithm>
#include <cstdio>
#include <utility>

void Faults::add(const json_value *at, std::string text)
{
    if (text.ends_with('\n'))
        text.pop_back();
    rows_.push_back({at, 0, 0, std::move(text)});
}

void Faults::explain(unsigned line, const std::string &reason)
{
    rows_.back().line = line;
    rows_.back().text += " " + reason + ".";
}

void Faults::print(std::string_view name, std::string_view text, const json_value *root)
{
    if (rows_.empty())
        return;
    if (root != nullptr) {
        const Lines lines(text, *root);
        for (Row &row : rows_)
            if (row.at != nullptr) {
                row.position = lines.position(*row.at);
                row.line = lines.line(*row.at);
            }
    }
    std::stable_sort(rows_.begin(), rows_.end(), [](const Row &one, const Row &other) {
        return one.position < other.position;
    });
    std::string all;
    for (const Row &row : rows_) {
        const std::string place = row.line == 0 ? "" : ":" + std::to_string(row.line);
        all += plain_text(name) + place + ": " + plain_text(row.text) + "\n";
    }
    fwrite(all.data(), 1, all.size(), stderr);
}
