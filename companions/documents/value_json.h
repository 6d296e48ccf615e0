// SPDX-License-Identifier: MIT
// A value, as the bytes of its item, in the form that configuration files have.
#pragma once

#include "config/config_keys.h"

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

struct ValueJson {
    nlohmann::ordered_json value; // null: no file can hold it
    std::string why;              // then: why
};

// A number, a text or a list, such that zov cfg makes the same bytes of it. Of a digest no password
// can be made: null without a reason.
ValueJson value_json(const ConfigKey &key, DeviceKind kind, std::string_view bytes);
