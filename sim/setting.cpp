// SPDX-License-Identifier: MIT
#include "sim/setting.h"

#include "device/cfg_layout.h"
#include "sim/defaults.h"
#include "util/byte_order.h"

#include <cstring>
#include <type_traits>

namespace {

// The most rows of a table; a device has as many radios as its model says.
template <class Row> constexpr size_t ROWS_MAX = SWITCH_PORTS;
template <> constexpr size_t ROWS_MAX<LanPortCfg> = LAN_PORTS;
template <> constexpr size_t ROWS_MAX<WlanCfg> = 16;
template <> constexpr size_t ROWS_MAX<Mac> = 256;
template <> constexpr size_t ROWS_MAX<HostSlot> = 255;

constexpr const char *BAD_LENGTH = "has a bad length or index";
constexpr const char *TOO_MANY = "asks for more than the device holds";

// Gives a table so many rows, in the same memory if it does not grow.
template <class Row> void resize(Arena &memory, ArrayView<Row> &table, size_t count)
{
    ArrayView<Row> resized(table.begin());
    if (count > table.size())
        memory.allocate(resized, count);
    for (size_t i = 0; i < count; i++) {
        const Row row = i < table.size() ? table[i] : Row();
        resized.append() = row;
    }
    table = resized;
}

// The visitor of the configuration's layout that gives the texts and tables of a copy memory of
// their own.
class DeepCopier {
public:
    explicit DeepCopier(Arena &memory) : memory_(memory) {}

    template <class Field> void operator()(const char *, Field &) {}
    void operator()(const char *, std::string_view &text)
    {
        if (!text.empty())
            text = memory_.copy(text);
    }
    template <class Int, class Row> void rows(const char *, ArrayView<Row> &table, CountOf<Int>)
    {
        ArrayView<Row> own;
        memory_.allocate(own, table.size());
        for (const Row &row : table)
            visit_fields(*this, own.append() = row);
        table = own;
    }

private:
    Arena &memory_;
};

// The visitor of the configuration's layout that sets one field: the one whose name is the rest of
// the setting's path. Where a name is a table's, the index key tells the row; one that is not there
// is added, if it may be.
class FieldSetter {
public:
    FieldSetter(Arena &memory, const WtpRecord &wtp, std::string_view path, std::string_view index,
                std::string_view value, bool may_add)
        : memory_(memory), wtp_(wtp), path_(path), index_(index), value_(value), may_add_(may_add)
    {
    }

    const char *wrong() const { return wrong_; } // null: nothing

    template <class Field> void operator()(const char *name, Field &field)
    {
        if (path_ != name)
            return;
        if (!path_.ends_with("[]") || element_++ == position())
            store(field);
    }

    template <class Int, class Row> void rows(const char *name, ArrayView<Row> &table, CountOf<Int>)
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

    template <class Row> size_t rows_max() const
    {
        return std::is_same_v<Row, RadioCfg> ? radios_of(wtp_) : ROWS_MAX<Row>;
    }

    template <class Row> void set_in_row(ArrayView<Row> &table, std::string_view rest)
    {
        if (index_.empty() || position() >= (may_add_ ? rows_max<Row>() : table.size())) {
            wrong_ = BAD_LENGTH;
            return;
        }
        if (position() >= table.size())
            resize(memory_, table, position() + 1);
        FieldSetter inner(memory_, wtp_, rest, index_.substr(1), value_, may_add_);
        visit_fields(inner, table[position()]);
        wrong_ = inner.wrong_;
    }

    // A whole table: its new number of rows, or all its rows where a row is a few bytes only.
    template <class Row> void store_all(ArrayView<Row> &table)
    {
        constexpr bool whole = std::is_same_v<Row, Mac> || std::is_same_v<Row, HostSlot>;
        if (whole ? value_.size() % sizeof(Row) != 0 : value_.size() != 4) {
            wrong_ = BAD_LENGTH;
            return;
        }
        const size_t count =
            whole ? value_.size() / sizeof(Row) : from_big_endian<uint32_t>(value_.data());
        if (count > rows_max<Row>()) {
            wrong_ = TOO_MANY;
            return;
        }
        resize(memory_, table, count);
        if constexpr (whole)
            for (size_t i = 0; i < count; i++)
                memcpy(static_cast<void *>(&table[i]), value_.data() + i * sizeof(Row),
                       sizeof(Row));
    }

    void store(std::string_view &text) { text = memory_.copy(value_.substr(0, value_.find('\0'))); }

    template <class Field> void store(Field &field)
    {
        if (value_.size() != sizeof field)
            wrong_ = BAD_LENGTH;
        else if constexpr (std::is_integral_v<Field>)
            field = from_big_endian<Field>(value_.data());
        else
            memcpy(static_cast<void *>(&field), value_.data(), sizeof field);
    }

    Arena &memory_;
    const WtpRecord &wtp_;
    std::string_view path_;
    std::string_view index_;
    std::string_view value_;
    bool may_add_;
    size_t element_ = 0;
    const char *wrong_ = nullptr;
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

// A configuration that is changed.
struct Target {
    const WtpRecord &wtp;
    WtpCfg &cfg;
    Arena &memory;
};

// Sets what the path of a row stands for. Returns what is wrong, or null.
const char *set_setting(std::string_view path, std::string_view index, std::string_view value,
                        const Target &target, bool may_add)
{
    const char *wrong = nullptr;
    const auto set = [&](std::string_view field, std::string_view bytes) {
        FieldSetter setter(target.memory, target.wtp, field, index, bytes, may_add);
        visit_fields(setter, target.cfg, target.wtp.wtp_type);
        wrong = setter.wrong();
    };
    path.remove_prefix(std::strlen("wtp_cfg."));
    if (path != "ipv4")
        set(path, value);
    else if (value.size() != 3 * sizeof(Ipv4))
        wrong = BAD_LENGTH;
    else
        for (size_t i = 0; const char *field : {"ip", "mask", "gateway"})
            set(field, value.substr(sizeof(Ipv4) * i++, sizeof(Ipv4)));
    return wrong;
}

} // namespace

std::string apply_item(const Item &item, const WtpRecord &wtp, WtpCfg &cfg, Arena &memory)
{
    const std::string name = "item " + std::to_string(item.type);
    const std::string_view path = path_of(item.type, static_cast<DeviceKind>(wtp.wtp_type));
    if (path.empty())
        return name + " is unknown";
    const char *wrong =
        set_setting(path, item.index, item.value, {.wtp = wtp, .cfg = cfg, .memory = memory}, true);
    return wrong == nullptr ? "" : name + " " + wrong;
}

void alter_setting(const Alteration &alteration, const WtpRecord &wtp, WtpCfg &cfg, Arena &memory)
{
    set_setting(alteration.path, alteration.index, alteration.value,
                {.wtp = wtp, .cfg = cfg, .memory = memory}, false);
}

WtpCfg *copy_configuration(const WtpCfg &from, uint8_t wtp_type, Arena &memory)
{
    auto *copy = memory.make<WtpCfg>();
    if (copy == nullptr)
        throw std::bad_alloc();
    *copy = from;
    DeepCopier copier(memory);
    visit_fields(copier, *copy, wtp_type);
    return copy;
}
