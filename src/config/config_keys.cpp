// SPDX-License-Identifier: MIT
#include "config/config_keys.h"

// The marks behind the title and the description of a row.
static constexpr uint8_t marks_of(const char *, const char *, unsigned marks = 0)
{
    return static_cast<uint8_t>(marks);
}
#define SAME "", ""

constexpr const ConfigKey ACCESS_POINT_KEYS[] = {
#define AP(id, form, min, max, path, ...) {id, FORM_##form, marks_of(__VA_ARGS__), min, max, path},
#include "config/settings.def"
    {},
};

constexpr const ConfigKey SWITCH_KEYS[] = {
#define SWITCH(id, form, min, max, path, ...)                                                      \
    {id, FORM_##form, marks_of(__VA_ARGS__), min, max, path},
#include "config/settings.def"
    {},
};

constexpr const ConfigArray CONFIG_ARRAYS[] = {
#define COUNT(id, path, ...) {id, marks_of(__VA_ARGS__), path},
#include "config/settings.def"
    {},
};

// The tables are searched from their first row; the texts' lengths, which are constants, tell
// almost all rows apart.
template <class Row> static const Row *find(const Row *row, std::string_view path)
{
    while (!row->path.empty() && row->path != path)
        row++;
    return row->path.empty() ? nullptr : row;
}

const ConfigKey *config_key_find(const ConfigKey *table, std::string_view path)
{
    return find(table, path);
}

const ConfigArray *config_array_find(std::string_view path)
{
    return find(CONFIG_ARRAYS, path);
}

bool config_keys_below(const ConfigKey *table, std::string_view path)
{
    while (!table->path.empty() && !table->path.starts_with(path))
        table++;
    return !table->path.empty();
}
