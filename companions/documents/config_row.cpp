// SPDX-License-Identifier: MIT
#include "documents/config_row.h"

#include "device/cfg_layout.h"
#include "util/byte_order.h"

#include <new>
#include <type_traits>

std::string number_bytes(uint32_t number)
{
    std::string bytes(sizeof number, '\0');
    to_big_endian(bytes.data(), number);
    return bytes;
}

uint32_t bytes_number(std::string_view bytes)
{
    return bytes.size() == sizeof(uint32_t) ? from_big_endian<uint32_t>(bytes.data()) : 0;
}

namespace {

// The visitor of the layout that fills a row.
class RowReader {
public:
    RowReader(const SettingTable &table, ConfigRow &row) : table_(table), row_(row) {}

    template <class Field> void operator()(const char *name, const Field &field)
    {
        if (const size_t column = table_.find(name); column != SettingTable::NONE)
            store(column, field);
        else if constexpr (std::is_same_v<Field, Ipv4>)
            store_address(field);
    }

    template <class Int, class Row> void rows(const char *name, ArrayView<Row> &table, CountOf<Int>)
    {
        const size_t column = table_.find(name);
        if constexpr (std::is_same_v<Row, Mac> || std::is_same_v<Row, HostSlot>) {
            row_.cells[column].value.emplace(reinterpret_cast<const char *>(table.begin()),
                                             table.size() * sizeof(Row));
        } else {
            const SettingTable &inner = *table_.columns[column].table;
            for (Row &row : table) {
                RowReader reader(inner, row_.cells[column].rows.emplace_back(inner));
                visit_fields(reader, row);
            }
        }
    }

private:
    // Address, mask and gateway are one setting.
    void store_address(Ipv4 addr)
    {
        std::optional<std::string> &value = row_.cells[table_.find("ipv4")].value;
        if (!value)
            value.emplace();
        value->append(reinterpret_cast<const char *>(addr.octet), sizeof addr.octet);
    }

    template <class Field> void store(size_t column, const Field &field)
    {
        std::optional<std::string> &value = row_.cells[column].value;
        if constexpr (std::is_same_v<Field, std::string_view>) {
            if (table_.columns[column].key == nullptr)
                store_element(column, field);
            else
                value.emplace(field);
        } else if constexpr (std::is_integral_v<Field>) {
            std::string bytes = number_bytes(static_cast<uint32_t>(field));
            if (table_.columns[column].key->form == FORM_U16)
                bytes.erase(0, 2);
            value = std::move(bytes);
        } else {
            value.emplace(reinterpret_cast<const char *>(&field), sizeof field);
        }
    }

    void store_element(size_t column, std::string_view text)
    {
        ConfigRow row(*table_.columns[column].table);
        row.cells[0].value.emplace(text);
        row_.cells[column].rows.push_back(std::move(row));
    }

    const SettingTable &table_;
    ConfigRow &row_;
};

// Appends items, with the index key of where it is.
class ItemWriter {
public:
    ItemWriter(TlvBuffer &items, bool with_state) : items_(items), with_state_(with_state) {}

    void write(const SettingColumn &column, const ConfigCell &cell)
    {
        if (column.has_mark(MARK_STATE) && !with_state_)
            return;
        if (column.table == nullptr) {
            if (cell.value)
                check(tlv_append(items_, column.key->id, key_, bytes_of(*cell.value)));
            return;
        }
        key_.push_back(0);
        if (column.count != nullptr)
            check(tlv_append_u32(items_, column.count->id, key_,
                                 static_cast<uint32_t>(cell.rows.size())));
        for (const ConfigRow &row : cell.rows) {
            for (size_t i = 0; i < row.cells.size(); i++)
                write(column.table->columns[i], row.cells[i]);
            key_.back()++;
        }
        key_.pop_back();
    }

private:
    static std::span<const uint8_t> bytes_of(const std::string &value)
    {
        return {reinterpret_cast<const uint8_t *>(value.data()), value.size()};
    }

    static void check(int failed)
    {
        if (failed != 0)
            throw std::bad_alloc();
    }

    TlvBuffer &items_;
    bool with_state_;
    std::vector<uint8_t> key_;
};

} // namespace

ConfigRow read_config(const WtpCfg &cfg, DeviceKind kind)
{
    const SettingTable &table = setting_table(kind);
    ConfigRow row(table);
    RowReader reader(table, row);
    visit_fields(reader, const_cast<WtpCfg &>(cfg), kind); // which is only read
    return row;
}

void append_items(TlvBuffer &items, const SettingTable &table, const ConfigRow &row, size_t member,
                  bool with_state)
{
    ItemWriter writer(items, with_state);
    for (size_t i = 0; i < row.cells.size(); i++)
        if (table.columns[i].member == member)
            writer.write(table.columns[i], row.cells[i]);
}
