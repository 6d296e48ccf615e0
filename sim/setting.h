// SPDX-License-Identifier: MIT
// Applies configuration items to a stored configuration.
#pragma once

#include "config/config_keys.h"
#include "device/wtp_record.h"
#include "sim/arena.h"
#include "sim/config_course.h"

#include <string>
#include <string_view>

// One item as it came over the wire; views into its request.
struct Item {
    uint16_t type = 0;
    std::string_view index;
    std::string_view value;
};

// Applies one item to a configuration of the given device, whose texts and tables live in `memory`;
// settings that no record carries are accepted and forgotten. Returns what is wrong with the item,
// or an empty text. Throws bad_alloc when memory is short, as does the next.
std::string apply_item(const Item &item, const WtpRecord &wtp, WtpCfg &cfg, Arena &memory);

// Sets one setting, whose path is that of its row; not where that would need a row that is not
// there, or where the value does not fit.
void alter_setting(const Alteration &alteration, const WtpRecord &wtp, WtpCfg &cfg, Arena &memory);

// A copy of a configuration that shares nothing with it.
WtpCfg *copy_configuration(const WtpCfg &from, uint8_t wtp_type, Arena &memory);
