// SPDX-License-Identifier: MIT
// What of a record can be sent as a setting, as zov cfg would see it.
#pragma once

#include "config/config_keys.h"
#include "device/wtp_record.h"

#include <string>
#include <string_view>
#include <vector>

// The elements of lists as the texts that stand for them in a file.
std::vector<std::string> texts_of(const ArrayView<Mac> &macs);
std::vector<std::string> texts_of(const ArrayView<HostSlot> &hosts);

// Why a text, or the elements of a list that is one setting, cannot be sent; empty when they can.
std::string why_unsendable(const ConfigKey &row, std::string_view text);
std::string why_list_unsendable(const ConfigKey &row, const std::vector<std::string> &elements,
                                DeviceKind kind);

// Whether the text of a data rate is read as this code.
bool is_rate_of(const char *text, int64_t code);
