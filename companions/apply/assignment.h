// SPDX-License-Identifier: MIT
// A --set, PATH=VALUE, taken apart and turned into a document that has the one setting.
#pragma once

#include "config/config_keys.h"

#include <string>
#include <string_view>
#include <vector>

// Which elements of an array it is for.
struct Selector {
    enum Kind : uint8_t { position, every, matching } kind = position;
    size_t number = 0;         // of position
    std::string member, value; // of matching: the name below the element, and its value as text
    std::string text;          // as it was given, without brackets
};

struct Assignment {
    struct Part {
        std::string name; // of a member on the way, without brackets
        bool has_selector = false;
    };
    std::string name; // for messages: the option and its path
    std::vector<Part> parts;
    std::vector<Selector> selectors;
    std::string path; // as the settings' table has it, [] for each selector
    std::string value;
    bool from_file = false, from_input = false; // the value names a file; standard input

    // The row of the setting, with the path as it stands or as a list; null: the kind does not have
    // it.
    const ConfigKey *key(DeviceKind kind) const;

    // A configuration file with this setting, in the first element of each array. `key` may be
    // null, for the message of who checks it. Throws UsageError for a value that is no UTF-8.
    std::string document(const ConfigKey *key, DeviceKind kind) const;

    // Throws UsageError where this kind of device has no member that elements are chosen by, where
    // that is a secret, and where the setting cannot be set so.
    void check(const ConfigKey &key, DeviceKind kind) const;
};

// Both throw UsageError: for a text that is none, and for a file that cannot be read. The second
// takes the value from the file that it names, without the line end at its end.
Assignment parse_assignment(std::string_view text);
void read_value(Assignment &set);
