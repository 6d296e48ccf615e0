// SPDX-License-Identifier: MIT
#include "documents/diagnostics.h"

#include "common/plain_text.h"

#include <algorithm>
#include <cstring>
#include <utility>

void Diagnostics::add(const json_value *at, std::string text)
{
    count_++;
    errors_++;
    of_walk_++;
    if (of_walk_ > MESSAGES_MAX)
        return;
    if (text.ends_with('\n'))
        text.pop_back();
    if (text.starts_with("ERROR: "))
        text.erase(0, strlen("ERROR: "));
    rows_.push_back({at, {}, true, std::move(text)});
}

void Diagnostics::warn(const std::string &text)
{
    add(nullptr, text);
    rows_.back().is_error = strict_;
    errors_ -= strict_ ? 0 : 1;
}

void Diagnostics::explain(unsigned line, const std::string &reason)
{
    rows_.back().place.line = line;
    rows_.back().text += " " + reason + ".";
}

std::vector<Diagnostic> Diagnostics::take(std::string_view name, std::string_view text,
                                          const json_value *root)
{
    std::vector<Diagnostic> made;
    if (rows_.empty())
        return made;
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
    for (Row &row : rows_)
        made.push_back({std::string(name), row.place.line, row.is_error, std::move(row.place.path),
                        std::move(row.text)});
    if (count_ > rows_.size())
        made.push_back({std::string(name), 0, errors_ > 0, "",
                        "and " + std::to_string(count_ - rows_.size()) + " more"});
    return made;
}

std::string text_of(const std::vector<Diagnostic> &diagnostics)
{
    std::string all;
    for (const Diagnostic &one : diagnostics) {
        const std::string line = one.line == 0 ? "" : ":" + std::to_string(one.line);
        const bool counts = one.message.starts_with("and ");
        all += plain_text(one.file) + line + ": ";
        all += counts ? "" : one.is_error ? "ERROR: " : "WARNING: ";
        all += plain_text(one.message) + "\n";
    }
    return all;
}
