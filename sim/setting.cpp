// SPDX-License-Identifier: MIT
#include "setting.h"

#include "device/cfg_layout.h"
#include "util/byte_order.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace {

template <class Row> bool resize(Arena &memory, ArenaTable<Row> &table, size_t count)
{
    ArenaTable<Row> resized;
    if (!resized.reserve(memory, count))
        return false;
    for (size_t i = 0; i < count; i++) {
        Row &row = resized.append();
        if (i < table.size())
            row = table[i];
    }
    table = resized;
    return true;
}

// The visitor of the configuration's layout that sets one field: the one whose name is the rest of
// the setting's path. Where a name is a table's, the index key tells the row.
class Setter {
public:
    Setter(Arena &memory, std::string_view path, std::string_view index, std::string_view value)
        : memory_(memory), path_(path), index_(index), value_(value)
    {
    }

    bool done() const { return done_; }
    bool fits() const { return fits_; } // false: the value or the index does not fit the field

    template <class Field> void operator()(const char *name, Field &field)
    {
        if (path_ != name)
            return;
        if (!path_.ends_with("[]") || element_++ == position())
            store(field);
    }

    template <class Int, class Row>
    void rows(const char *name, ArenaTable<Row> &table, CountOf<Int>)
    {
        const std::string_view table_name(name);
        if (!path_.starts_with(table_name) || !path_.substr(table_name.size()).starts_with("[]"))
            return;
        const std::string_view rest = path_.substr(table_name.size() + 2);
        if (rest.empty())
            store_all(table);
        else
            set_in_row(table, rest.substr(1));
    }

private:
    size_t position() const
    {
        return index_.empty() ? 0 : static_cast<unsigned char>(index_.front());
    }

    template <class Row> void set_in_row(ArenaTable<Row> &table, std::string_view rest)
    {
        done_ = true;
        if (index_.empty()) {
            fits_ = false;
            return;
        }
        if (position() >= table.size() && !resize(memory_, table, position() + 1))
            return;
        Setter inner(memory_, rest, index_.substr(1), value_);
        lay_out(inner, table[position()]);
        done_ = inner.done_;
        fits_ = inner.fits_;
    }

    // A whole table: its new number of rows, or all its rows where a row is a few bytes only.
    template <class Row> void store_all(ArenaTable<Row> &table)
    {
        done_ = true;
        if constexpr (std::is_same_v<Row, Mac> || std::is_same_v<Row, HostSlot>) {
            fits_ = value_.size() % sizeof(Row) == 0 &&
                    resize(memory_, table, value_.size() / sizeof(Row));
            if (!fits_)
                return;
            for (Row &row : table)
                memcpy(static_cast<void *>(&row),
                       value_.data() + static_cast<size_t>(&row - table.begin()) * sizeof row,
                       sizeof row);
        } else {
            fits_ = value_.size() == 4;
            if (fits_)
                resize(memory_, table,
                       std::min<size_t>(from_big_endian<uint32_t>(value_.data()), 256));
        }
    }

    void store(ArenaText &text)
    {
        done_ = true;
        text = ArenaText();
        if (!value_.empty())
            fits_ = text.assign(memory_, std::string(value_).c_str());
    }

    template <class Field> void store(Field &field)
    {
        done_ = true;
        fits_ = value_.size() == sizeof field;
        if (!fits_)
            return;
        if constexpr (std::is_integral_v<Field>)
            field = from_big_endian<Field>(value_.data());
        else
            memcpy(static_cast<void *>(&field), value_.data(), sizeof field);
    }

    Arena &memory_;
    std::string_view path_;
    std::string_view index_;
    std::string_view value_;
    size_t element_ = 0;
    bool done_ = false;
    bool fits_ = true;
};

std::string_view path_of(uint16_t id, DeviceKind kind)
{
    for (const ConfigKey *row = config_keys(kind); !row->path.empty(); row++)
        if (row->id == id)
            return row->path;
    for (const ConfigArray *row = CONFIG_ARRAYS; !row->path.empty(); row++)
        if (row->id == id)
            return row->path;
    return {};
}

std::string set(WtpCfg &cfg, Arena &memory, std::string_view path, const Item &item,
                DeviceKind kind, std::string_view value)
{
    Setter setter(memory, path, item.index, value);
    lay_out(setter, cfg, kind);
    return setter.fits() ? "" : "item " + std::to_string(item.type) + " has a bad length or index";
}

} // namespace

std::string apply_item(const Item &item, DeviceKind kind, WtpCfg &cfg, Arena &memory)
{
    std::string_view path = path_of(item.type, kind);
    if (path.empty())
        return "item " + std::to_string(item.type) + " is unknown";
    path.remove_prefix(std::strlen("wtp_cfg."));
    if (path != "ipv4")
        return set(cfg, memory, path, item, kind, item.value);

    if (item.value.size() != 12)
        return "item " + std::to_string(item.type) + " has a bad length or index";
    const std::string_view value = item.value;
    set(cfg, memory, "ip", item, kind, value.substr(0, 4));
    set(cfg, memory, "mask", item, kind, value.substr(4, 4));
    return set(cfg, memory, "gateway", item, kind, value.substr(8, 4));
}
