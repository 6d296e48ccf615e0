// SPDX-License-Identifier: MIT
// A JSON configuration file, read, checked against the key table of its device kind and turned into
// items.
#pragma once

#include "config/config_keys.h"
#include "config/tlv_buffer.h"
#include "util/bytes.h"

#include <memory>

// Appends the items of the file to the buffer. An empty file has none. Returns 0, or 1 with the
// message of the first thing that is wrong reported (an object without members and a value of no
// known kind have none).
int config_file_load(const char *name, DeviceKind kind, TlvBuffer &items);

// The parts of it. Reading gives the whole file, with a byte behind it that the parser looks at.
int config_file_read(const char *name, Bytes &text, const Messages &messages);

// Parses a text that is not empty. Null when it is no JSON: the message is reported, and `why`
// (null, or memory for json_error_max characters) has the parser's own.
using JsonTree = std::unique_ptr<json_value, void (*)(json_value *)>;
JsonTree config_text_parse(const char *name, Bytes &text, const Messages &messages, char *why);

// Turns a parsed file into items, with the same result.
int config_tree_load(const json_value &root, DeviceKind kind, TlvBuffer &items);
