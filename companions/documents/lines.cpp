// SPDX-License-Identifier: MIT
#include "documents/lines.h"

#include <algorithm>
#include <cstring>
#include <vector>

// The position behind the string whose first quotation mark is at `at`.
static size_t behind_string(std::string_view text, size_t at)
{
    for (at++; at < text.size() && text[at] != '"'; at++)
        if (text[at] == '\\')
            at++;
    return std::min(at + 1, text.size());
}

// Whether the text goes on with a colon: what stood before it is a member's name.
static bool is_name_before(std::string_view text, size_t at)
{
    at = text.find_first_not_of(" \t\r\n", at);
    return at != std::string_view::npos && text[at] == ':';
}

// The line of each value's first character, of a text that the parser has accepted.
static std::vector<unsigned> lines_of_values(std::string_view text)
{
    std::vector<unsigned> lines;
    unsigned line = 1;
    for (size_t at = 0; at < text.size();) {
        size_t end = at + 1;
        bool begins = false;
        if (text[at] == '"') {
            end = behind_string(text, at);
            begins = !is_name_before(text, end);
        } else if (text[at] == '{' || text[at] == '[') {
            begins = true;
        } else if (text[at] == '\0') { // ends the text for the parser
            break;
        } else if (strchr("-0123456789tfn", text[at]) != nullptr) {
            end = std::min(text.find_first_of({",]} \t\r\n\0", 8}, at), text.size());
            begins = true;
        }
        if (begins)
            lines.push_back(line);
        line += static_cast<unsigned>(std::count(&text[at], text.data() + end, '\n'));
        at = end;
    }
    return lines;
}

namespace {

// A value on its way to be counted, and where it stands in the one that holds it.
struct Step {
    const json_value *value;
    size_t holder; // among the holders
    unsigned place;
};

struct Holder {
    const json_value *value;
    size_t holder; // of itself; that of the root is 0, which is nobody
    unsigned place;
};

std::string path_of(const std::vector<Holder> &holders, const Step &step)
{
    std::string path;
    size_t holder = step.holder;
    unsigned place = step.place;
    while (holder > 0) {
        const json_value &value = *holders[holder].value;
        std::string part;
        if (value.type == json_array) {
            part = "[" + std::to_string(place) + "]";
        } else {
            const json_object_entry &member = value.u.object.values[place];
            part = "." + std::string(member.name, member.name_length);
        }
        path.insert(0, part);
        place = holders[holder].place;
        holder = holders[holder].holder;
    }
    return path.starts_with('.') ? path.substr(1) : path;
}

} // namespace

void find_places(std::string_view text, const json_value &root, ValuePlaces &places)
{
    const std::vector<unsigned> lines = lines_of_values(text);
    std::vector<Holder> holders(1);
    std::vector<Step> waiting = {{&root, 0, 0}};
    for (size_t n = 0; !waiting.empty(); n++) {
        const Step step = waiting.back();
        waiting.pop_back();
        const json_value &value = *step.value;
        if (const auto wanted = places.find(&value); wanted != places.end())
            wanted->second = {n, n < lines.size() ? lines[n] : 0, path_of(holders, step)};
        if (value.type != json_object && value.type != json_array)
            continue;
        holders.push_back({&value, step.holder, step.place});
        const bool is_object = value.type == json_object;
        for (unsigned i = is_object ? value.u.object.length : value.u.array.length; i > 0; i--)
            waiting.push_back(
                {is_object ? value.u.object.values[i - 1].value : value.u.array.values[i - 1],
                 holders.size() - 1, i - 1});
    }
}
