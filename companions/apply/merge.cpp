// SPDX-License-Identifier: MIT
#include "apply/merge.h"

#include "apply/differences.h"
#include "documents/item_reader.h"
#include "documents/value_json.h"

#include <algorithm>
#include <set>
#include <unordered_map>

using std::string;
using std::string_view;

namespace {

// Where an item's value belongs: a column of each table on the way, outermost first.
struct ItemPlace {
    std::vector<size_t> columns;
    bool is_count = false; // the number of rows of the last
};

using ItemPlaces = std::unordered_map<int32_t, ItemPlace>;

void add_places(ItemPlaces &places, const SettingTable &table, std::vector<size_t> way)
{
    for (size_t i = 0; i < table.columns.size(); i++) {
        const SettingColumn &column = table.columns[i];
        way.push_back(i);
        if (column.key != nullptr)
            places[column.key->id] = {way, false};
        if (column.count != nullptr)
            places[column.count->id] = {way, true};
        if (column.table != nullptr)
            add_places(places, *column.table, way);
        way.pop_back();
    }
}

const ItemPlaces &places_of(DeviceKind kind)
{
    const auto make = [](DeviceKind of) {
        ItemPlaces places;
        add_places(places, setting_table(of), {});
        return places;
    };
    static const ItemPlaces access_points = make(DEVICE_ACCESS_POINT),
                            switches = make(DEVICE_SWITCH);
    return kind == DEVICE_SWITCH ? switches : access_points;
}

class Merger {
public:
    Merger(DeviceKind kind, unsigned source, MergeResult &result)
        : table_(setting_table(kind)), places_(places_of(kind)), source_(source), result_(result)
    {
    }

    void add_file(ConfigRow &row, const Document &document);
    void add_set(ConfigRow &row, const Document &document);

private:
    void find_ports(const Document &document);
    void set_count(ConfigCell &cell, const SettingColumn &column, size_t count, const string &path,
                   const Document &document);
    ConfigRow *find_row(ConfigCell &cell, const SettingColumn &column, size_t position,
                        const string &path);
    ConfigRow *find_port(ConfigCell &cell, const SettingColumn &column, const string &port);
    void set_value(ConfigCell &cell, const SettingColumn &column, string_view value);
    bool set_matching(ConfigRow &row, const SettingTable &table, const ItemPlace &place,
                      size_t level, const string &path);
    std::vector<size_t> select(const ConfigCell &cell, const SettingColumn &column,
                               const Selector &selector) const;
    void complain(const string &path) { result_.problems.push_back({source_, "has no " + path}); }

    const SettingTable &table_;
    const ItemPlaces &places_;
    const unsigned source_; // the document, counted from 1
    MergeResult &result_;

    // Of the file that is laid over: the port of each element of an array, by its position.
    std::map<const SettingColumn *, std::map<size_t, string>> ports_;

    // Of the --set.
    const Document *set_ = nullptr;
    string_view value_;
    bool has_empty_ = false; // an array without elements was passed, of which [*] takes all
};

void Merger::find_ports(const Document &document)
{
    ports_.clear();
    ItemReader items(document.items);
    while (const auto item = items.next()) {
        const ItemPlace &place = places_.at(item->id);
        if (place.columns.size() != 2)
            continue;
        const SettingColumn &array = table_.columns[place.columns.front()];
        if (array.table->port == place.columns.back())
            ports_[&array][static_cast<uint8_t>(item->index[0])] = item->value;
    }
}

// A row that a device does not have yet: of its lists of texts all elements are there.
ConfigRow &add_row(ConfigCell &cell, const SettingTable &table)
{
    ConfigRow &row = cell.rows.emplace_back(table);
    for (size_t i = 0; i < row.cells.size(); i++)
        if (table.columns[i].texts > 0)
            row.cells[i].rows.assign(table.columns[i].texts, ConfigRow(*table.columns[i].table));
    return row;
}

ConfigRow *Merger::find_port(ConfigCell &cell, const SettingColumn &column, const string &port)
{
    for (ConfigRow &row : cell.rows)
        if (row.cells[column.table->port].value == port)
            return &row;
    if (!column.has_mark(MARK_GROWS))
        return nullptr;
    ConfigRow &added = add_row(cell, *column.table);
    added.cells[column.table->port].value = port;
    return &added;
}

ConfigRow *Merger::find_row(ConfigCell &cell, const SettingColumn &column, size_t position,
                            const string &path)
{
    if (column.table->port == SettingTable::NONE) {
        const size_t size = cell.rows.size();
        if (position == size && column.has_mark(MARK_GROWS))
            add_row(cell, *column.table);
        if (position < cell.rows.size())
            return &cell.rows[position];
        complain(path + "[" + std::to_string(column.has_mark(MARK_GROWS) ? size : position) + "]");
        return nullptr;
    }
    const string &port = ports_[&column][position];
    ConfigRow *row = find_port(cell, column, port);
    if (row == nullptr)
        complain(path + "[port=" + std::to_string(bytes_number(port)) + "]");
    return row;
}

// A file has so many elements of an array.
void Merger::set_count(ConfigCell &cell, const SettingColumn &column, size_t count,
                       const string &path, const Document &document)
{
    const bool grows = column.has_mark(MARK_GROWS);
    if (column.table->port == SettingTable::NONE) {
        if (!grows && count > cell.rows.size())
            return complain(path + "[" + std::to_string(count - 1) + "]");
        if (grows && document.role == Document::own && count < cell.rows.size())
            cell.rows.resize(count, ConfigRow(*column.table));
    } else if (grows && document.role == Document::own) {
        const auto &ports = ports_[&column];
        std::erase_if(cell.rows, [&](const ConfigRow &row) {
            return std::none_of(ports.begin(), ports.end(), [&](const auto &port) {
                return row.cells[column.table->port].value == port.second;
            });
        });
    }
}

void Merger::set_value(ConfigCell &cell, const SettingColumn &column, string_view value)
{
    string bytes(value);
    if (cell.source != 0 && cell.source != source_ && cell.value &&
        !is_same_value(*column.key, *cell.value, bytes))
        result_.overridden[{source_, cell.source}]++;
    cell.value = std::move(bytes);
    cell.source = source_;
}

void Merger::add_file(ConfigRow &row, const Document &document)
{
    find_ports(document);
    ItemReader items(document.items);
    while (const auto item = items.next()) {
        const ItemPlace &place = places_.at(item->id);
        const SettingTable *table = &table_;
        ConfigRow *at = &row;
        string path;
        for (size_t level = 0; at != nullptr; level++) {
            const SettingColumn &column = table->columns[place.columns[level]];
            ConfigCell &cell = at->cells[place.columns[level]];
            if (column.table == nullptr) {
                set_value(cell, column, item->value);
                break;
            }
            path = array_path(path, column);
            if (level + 1 == place.columns.size()) {
                set_count(cell, column, bytes_number(item->value), path, document);
                break;
            }
            const size_t position = static_cast<uint8_t>(item->index[level]);
            at = find_row(cell, column, position, path);
            path += "[" + std::to_string(position) + "]";
            table = column.table.get();
        }
    }
}

std::vector<size_t> Merger::select(const ConfigCell &cell, const SettingColumn &column,
                                   const Selector &selector) const
{
    std::vector<size_t> positions;
    const size_t member =
        selector.kind == Selector::matching ? column.table->find(selector.member) : 0;
    const bool can_match = selector.kind == Selector::matching && member != SettingTable::NONE &&
                           column.table->columns[member].key != nullptr;
    for (size_t i = 0; i < cell.rows.size(); i++) {
        bool is_taken = selector.kind == Selector::every ||
                        (selector.kind == Selector::position && i == selector.number);
        if (can_match && cell.rows[i].cells[member].value) {
            const auto value = value_json(*column.table->columns[member].key, table_.kind,
                                          *cell.rows[i].cells[member].value)
                                   .value;
            is_taken = (value.is_string() ? value.get<string>() : value.dump()) == selector.value;
        }
        if (is_taken)
            positions.push_back(i);
    }
    return positions;
}

// Sets the value in each row that the selectors from this level on take; false if there is none.
bool Merger::set_matching(ConfigRow &row, const SettingTable &table, const ItemPlace &place,
                          size_t level, const string &above)
{
    const SettingColumn &column = table.columns[place.columns[level]];
    ConfigCell &cell = row.cells[place.columns[level]];
    if (column.table == nullptr) {
        set_value(cell, column, value_);
        return true;
    }
    const Selector &selector = set_->selectors[level];
    const string path = array_path(above, column);
    const std::vector<size_t> positions = select(cell, column, selector);
    if (positions.empty() && selector.kind == Selector::position)
        complain(path + "[" + selector.text + "]");
    has_empty_ |= positions.empty() && selector.kind != Selector::matching;
    bool is_set = false;
    for (const size_t position : positions)
        is_set |= set_matching(cell.rows[position], *column.table, place, level + 1,
                               path + "[" + std::to_string(position) + "]");
    return is_set;
}

void Merger::add_set(ConfigRow &row, const Document &document)
{
    set_ = &document;
    has_empty_ = false;
    const auto item = ItemReader(document.items).next();
    value_ = item->value;
    if (!set_matching(row, table_, places_.at(item->id), 0, "") && !has_empty_)
        complain(document.name.substr(document.name.find(' ') + 1));
}

// The members of an undo file as they were.
void restore(ConfigRow &row, const Document &document, DeviceKind kind)
{
    ConfigRow saved = row_of_items(document.items, kind);
    ItemReader items(document.items);
    std::set<size_t> columns;
    while (const auto item = items.next())
        columns.insert(places_of(kind).at(item->id).columns.front());
    for (const size_t column : columns)
        row.cells[column] = std::move(saved.cells[column]);
}

// The state of rows that were there before is as it was read last.
void take_state(ConfigRow &row, const ConfigRow &stored, const SettingTable &table)
{
    for (size_t i = 0; i < table.columns.size(); i++) {
        const SettingColumn &column = table.columns[i];
        if (column.table == nullptr || column.table->port == SettingTable::NONE)
            continue;
        for (ConfigRow &own : row.cells[i].rows)
            for (const ConfigRow &old : stored.cells[i].rows)
                if (own.cells[column.table->port].value == old.cells[column.table->port].value)
                    for (size_t at = 0; at < own.cells.size(); at++)
                        if (column.table->columns[at].has_mark(MARK_STATE))
                            own.cells[at] = old.cells[at];
    }
}

} // namespace

ConfigRow row_of_items(string_view items, DeviceKind kind)
{
    const SettingTable &table = setting_table(kind);
    ConfigRow saved(table);
    ItemReader reader(items);
    while (const auto item = reader.next()) {
        const ItemPlace &place = places_of(kind).at(item->id);
        const SettingTable *in = &table;
        ConfigRow *at = &saved;
        for (size_t level = 0; level < place.columns.size(); level++) {
            const SettingColumn &column = in->columns[place.columns[level]];
            ConfigCell &cell = at->cells[place.columns[level]];
            if (column.table == nullptr) {
                cell.value = item->value;
            } else if (level + 1 == place.columns.size()) {
                cell.rows.resize(std::min<uint32_t>(bytes_number(item->value), CONFIG_ELEMENTS_MAX),
                                 ConfigRow(*column.table));
            } else {
                const size_t position = static_cast<uint8_t>(item->index[level]);
                if (position >= cell.rows.size())
                    cell.rows.resize(position + 1, ConfigRow(*column.table));
                at = &cell.rows[position];
                in = column.table.get();
            }
        }
    }
    return saved;
}

MergeResult lay_over(ConfigRow &row, const std::vector<const Document *> &documents,
                     DeviceKind kind)
{
    MergeResult result;
    unsigned source = 0;
    for (const Document *document : documents) {
        source++;
        if (document->role == Document::undo) {
            const ConfigRow stored = row;
            restore(row, *document, kind);
            take_state(row, stored, setting_table(kind));
        } else if (document->role == Document::set) {
            Merger(kind, source, result).add_set(row, *document);
        } else {
            Merger(kind, source, result).add_file(row, *document);
        }
    }
    return result;
}

// Bytes of a form's value: so many, or a multiple of so many.
static bool has_size(const ConfigKey &key, size_t size)
{
    switch (key.form) {
    case FORM_U32:
    case FORM_DATA_RATE:
        return size == sizeof(uint32_t);
    case FORM_U16:
        return size == sizeof(uint16_t);
    case FORM_IPV4:
    case FORM_SERVER_ADDRESS:
        return size == sizeof(Ipv4);
    case FORM_IP_SETTINGS:
        return size == 3 * sizeof(Ipv4);
    case FORM_PASSWORD_DIGEST:
        return size == sizeof(Md5Digest);
    case FORM_MAC_LIST:
    case FORM_HOST_LIST:
        return size % key.element_size() == 0;
    case FORM_TEXT:
        break;
    }
    return true;
}

bool are_items_of(DeviceKind kind, string_view bytes)
{
    ItemReader items(bytes);
    while (const auto item = items.next()) {
        const auto found = places_of(kind).find(item->id);
        if (found == places_of(kind).end())
            return false;
        const auto &[columns, is_count] = found->second;
        const SettingTable *table = &setting_table(kind);
        for (size_t i = 0; i + 1 < columns.size(); i++)
            table = table->columns[columns[i]].table.get();
        const SettingColumn &column = table->columns[columns.back()];
        if (item->index.size() != columns.size() - (is_count ? 0 : 1) ||
            !(is_count ? item->value.size() == sizeof(uint32_t)
                       : has_size(*column.key, item->value.size())))
            return false;
    }
    return items.is_whole();
}
