// SPDX-License-Identifier: MIT
#include "documents/spelling.h"

#include <algorithm>
#include <cctype>

static bool same_letter(char one, char other)
{
    return tolower(static_cast<unsigned char>(one)) == tolower(static_cast<unsigned char>(other));
}

// The distance of optimal string alignment, computed row by row.
static size_t distance(std::string_view one, std::string_view other)
{
    std::vector<size_t> before, above, row(other.size() + 1);
    for (size_t j = 0; j <= other.size(); j++)
        row[j] = j;
    for (size_t i = 1; i <= one.size(); i++) {
        before = std::move(above);
        above = std::move(row);
        row.assign(other.size() + 1, i);
        for (size_t j = 1; j <= other.size(); j++) {
            const size_t replaced = above[j - 1] + (same_letter(one[i - 1], other[j - 1]) ? 0 : 1);
            row[j] = std::min({replaced, above[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && same_letter(one[i - 1], other[j - 2]) &&
                same_letter(one[i - 2], other[j - 1]))
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
    }
    return row[other.size()];
}

std::string_view nearest_name(std::string_view word, const std::vector<std::string_view> &names)
{
    std::string_view nearest;
    size_t limit = std::max<size_t>(1, word.size() / 3) + 1;
    for (const std::string_view name : names) {
        if (name.size() >= word.size() + limit || word.size() >= name.size() + limit)
            continue;
        if (const size_t far = distance(word, name); far < limit) {
            limit = far;
            nearest = name;
        }
    }
    return nearest;
}
