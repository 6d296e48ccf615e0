// SPDX-License-Identifier: MIT
#include "check/diagnostics.h"

#include "common/plain_text.h"

#include <algorithm>
#include <cstdio>
#include <utility>

void Diagnostics::add(const json_value *at, std::string text)
{
    count_++;
    of_walk_++;
    if (of_walk_ > MESSAGES_MAX)
        return;
    if (text.ends_with('\n'))
        text.pop_back();
    rows_.push_back({at, {}, std::move(text)});
}

void Diagnostics::explain(unsigned line, const std::string &reason)
{
    rows_.back().place.line = line;
    rows_.back().text += " " + reason + ".";
}

void Diagnostics::print(std::string_view name, std::string_view text, const json_value *root)
{
    if (rows_.empty())
        return;
    if (root != nullptr) {
        ValuePlaces places;
        for (const Row &row : rows_)
            if (row.at != nullptr)
                places[row.at] = {};
        find_places(text, *root, places);
        for (Row &row : rows_)
            if (row.at != nullptr)
                row.place = places[row.at];
    }
    std::stable_sort(rows_.begin(), rows_.end(), [](const Row &one, const Row &other) {
        return one.place.position < other.place.position;
    });
    rows_.resize(std::min<size_t>(rows_.size(), MESSAGES_MAX));
    const std::string shown = plain_text(name);
    std::string all;
    for (const Row &row : rows_) {
        const std::string line = row.place.line == 0 ? "" : ":" + std::to_string(row.place.line);
        all += shown + line + ": " + plain_text(row.text) + "\n";
    }
    if (count_ > rows_.size())
        all += shown + ": and " + std::to_string(count_ - rows_.size()) + " more\n";
    fwrite(all.data(), 1, all.size(), stderr);
}
