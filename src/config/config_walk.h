// SPDX-License-Identifier: MIT
// The walk over a parsed configuration file, depth first, which gives every value its path and its
// index key.
#pragma once

#include "config/config_keys.h"
#include "config/config_value.h"
#include "config/tlv_buffer.h"

#include <cstddef>
#include <cstdint>

class ConfigWalk {
public:
    ConfigWalk(DeviceKind kind, TlvBuffer &items) : handler_(kind, items) {}

    // Walks one value and all below it. Returns 0, or 1 when something was refused.
    int visit(const json_value &value);

private:
    enum : uint32_t { DEPTH_MAX = 63, PATH_MAX_BYTES = 255 };

    int visit_object(const json_value &object);
    int visit_array(const json_value &array);
    int append_path(const char *separator, const char *name, size_t length);

    ConfigValueHandler handler_;

    // The position that was visited last at each depth. A new container at a depth starts with what
    // an earlier one of the file left there: an array's own item carries it in its index key.
    uint32_t position_[DEPTH_MAX] = {};
    uint32_t depth_ = 0; // the number of values on the way, this one included

    char path_[PATH_MAX_BYTES] = {};
    size_t path_length_ = 0;
    uint8_t key_[DEPTH_MAX] = {}; // a byte for each array on the way
    uint32_t key_length_ = 0;
};
