// SPDX-License-Identifier: MIT
#include "sim/port_order.h"

#include "sim/defaults.h"
#include "util/byte_order.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <string>

namespace {

constexpr size_t NEW = SIZE_MAX; // the stored position of a row that was not there

// What a request says of an array.
struct PortElements {
    std::map<size_t, uint32_t> ports; // that elements name, by their positions
    size_t count = 0;                 // of elements, as an item tells
};

PortElements read_elements(std::span<const Item> items, const std::string &array)
{
    const int32_t port = config_key_find(SWITCH_KEYS, array + ".port")->id;
    const int32_t count = config_array_find(array)->id;
    PortElements elements;
    for (const Item &item : items) {
        if (item.value.size() != sizeof(uint32_t))
            continue;
        const auto number = from_big_endian<uint32_t>(item.value.data());
        if (item.type == port && item.index.size() == 1)
            elements.ports[static_cast<unsigned char>(item.index.front())] = number;
        else if (item.type == count)
            elements.count = std::min(number, SWITCH_PORTS); // more are refused
    }
    return elements;
}

// The stored position of the row that each position is to have.
template <class Row>
std::vector<size_t> arranged(const ArrayView<Row> &table, const PortElements &elements)
{
    std::vector<size_t> order(std::max<size_t>(table.size(), elements.count), NEW);
    std::vector<size_t> left(table.size());
    std::iota(left.begin(), left.end(), 0);
    for (const auto &[element, port] : elements.ports) {
        const auto row = std::find_if(left.begin(), left.end(),
                                      [&, port = port](size_t i) { return table[i].port == port; });
        if (row == left.end() || element >= order.size())
            continue;
        order[element] = *row;
        left.erase(row);
    }
    std::erase_if(left, [&](size_t row) {
        const bool stays = order[row] == NEW;
        if (stays)
            order[row] = row;
        return stays;
    });
    for (const size_t row : left)
        *std::find(order.begin(), order.end(), NEW) = row;
    return order;
}

// Calls act(name, table, n) for each array of ports.
template <class Act> void for_port_arrays(WtpCfg &cfg, Act act)
{
    act("wtp_cfg.switch_port[]", cfg.switch_port, 0);
    act("wtp_cfg.poe_port[]", cfg.poe_port, 1);
    act("wtp_cfg.pd_lifeguard[]", cfg.pd_lifeguard, 2);
}

} // namespace

PortOrder::PortOrder(std::span<const Item> items, WtpCfg &cfg, Arena &memory)
{
    for_port_arrays(cfg, [&](const char *name, auto &table, int n) {
        stored_[n] = arranged(table, read_elements(items, name));
        auto rows = table;
        memory.allocate(rows, stored_[n].size());
        for (const size_t from : stored_[n]) {
            auto &row = rows.append();
            if (from != NEW)
                row = table[from];
        }
        table = rows;
    });
}

void PortOrder::restore(WtpCfg &cfg) const
{
    for_port_arrays(cfg, [&](const char *, auto &table, int n) {
        std::vector<size_t> order = stored_[n];
        order.resize(table.size(), NEW);
        std::vector rows(table.begin(), table.end());
        std::vector<size_t> from(rows.size());
        std::iota(from.begin(), from.end(), 0);
        std::stable_sort(from.begin(), from.end(),
                         [&](size_t a, size_t b) { return order[a] < order[b]; });
        for (size_t i = 0; i < rows.size(); i++)
            table[i] = rows[from[i]];
    });
}
