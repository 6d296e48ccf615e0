// SPDX-License-Identifier: MIT
// The walk over a parsed configuration file, depth first, which gives every value its path and its
// index key.
#pragma once

#include "config/tlv_buffer.h"

#include <cstddef>
#include <cstdint>
#include <json-parser/json.h>
#include <string_view>

// Where a walk is. Zero before each file.
struct JsonIterStack {
    enum : uint32_t { DEPTH_MAX = 63, PATH_MAX_BYTES = 255 };

    uint32_t count = 0; // the number of values on the way, the current one included

    // The position that was visited last at each depth. A new container at a depth starts with what
    // an earlier one of the file left there: an array's own item carries it in its index key.
    uint32_t index[DEPTH_MAX] = {};

    char path[PATH_MAX_BYTES] = {};
    size_t path_length = 0; // can be more than fits; no setting has such a path

    uint8_t key[DEPTH_MAX] = {}; // a byte for each array on the way
    uint32_t key_length = 0;
};

// Takes one value: an array before its elements (its path ends with [], its key with a byte of its
// own), or any value that is neither array nor object. Returns 0 to go on, 1 to stop.
using JsonHandler = int (*)(std::string_view path, IndexKey key, const json_value &value,
                            void *context);

// Takes what no walk goes into: an object without members, for which there is no message (null), or
// a value that is nested too deeply. Returns 0 to go on behind it, 1 to stop.
using JsonRefusal = int (*)(const json_value &value, const char *message, void *context);

// What a walk calls.
struct JsonVisitor {
    JsonHandler take;
    JsonRefusal refuse;
    void *context;
};

// Walks one value and all below it; those whose path is longer than PATH_MAX_BYTES are passed over.
// Returns 0; or 1 when the visitor stopped the walk, or the value is of no known kind.
int json_walk(JsonIterStack &stack, const json_value &value, const JsonVisitor &visitor);
