// SPDX-License-Identifier: MIT
// Switches tell the elements of their port arrays apart by their ports, not by their positions.
#pragma once

#include "sim/setting.h"

#include <span>
#include <vector>

// Arranges the rows of a switch's ports as the elements of a request, so that its items meet the
// rows of the ports that they are for.
class PortOrder {
public:
    // Brings the row of each port that an element names to the element's position. The other rows
    // stay where they are if they can, and so does an element whose port has no row. Where the
    // request asks for fewer elements than there are rows, those that are named come first.
    PortOrder(std::span<const Item> items, WtpCfg &cfg, Arena &memory);

    // Brings the rows back into the order that they had, new ones behind them.
    void restore(WtpCfg &cfg) const;

private:
    std::vector<size_t> stored_[3]; // for each row of a table, the position that it had
};
