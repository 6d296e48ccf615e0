// SPDX-License-Identifier: MIT
// MAC addresses (EUI-48, IEEE 802): parsing of one and of lists, and their text.
#pragma once

#include "util/fixed_array.h"

#include <compare>
#include <cstdint>

// One address, first byte first, as written in its text and as sent on the wire.
struct Mac {
    uint8_t byte[6] = {};

    // A group (multicast) address names no single device.
    bool is_group() const { return (byte[0] & 1) != 0; }
    auto operator<=>(const Mac &) const = default;
};

using MacList = FixedArray<Mac>;

// Reads six hexadecimal numbers joined by colons, each as scanf's %x reads it and at most 0xFF;
// text after the sixth is ignored. False when the text is no such address or all six bytes are
// zero.
bool parse_mac(const char *text, Mac &mac);

// Reads addresses joined by commas into `list`, in order of first appearance, each once; empty
// items are skipped, so a text without any item gives an empty list. False when an item is no
// address or a group address, or memory is short; `list` is then empty.
bool parse_mac_list(const char *text, MacList &list);

enum : unsigned { MAC_TEXT_MAX = 17 };

// Writes "AA:BB:CC:DD:EE:FF" into MAC_TEXT_MAX bytes, unterminated, and returns the text's end.
char *write_mac(char *to, const Mac &mac);

// The same in lower case.
char *write_mac_lower(char *to, const Mac &mac);

// The text in upper case, terminated, in one static buffer that the next call overwrites.
const char *mac_to_text(const Mac &mac);
