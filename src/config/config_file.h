// SPDX-License-Identifier: MIT
// A JSON configuration file, read, checked against the key table of its device kind and turned into
// items.
#pragma once

#include "config/config_keys.h"
#include "config/tlv_buffer.h"

// Reads the file into the empty buffer. An empty file has no items. Returns 0, or 1 with the
// message of the first thing that is wrong printed (an object without members and a value of no
// known kind have none).
int config_file_load(const char *name, DeviceKind kind, TlvBuffer &items);

// Turns a parsed file into items, with the same result.
int config_tree_load(const json_value &root, DeviceKind kind, TlvBuffer &items);
