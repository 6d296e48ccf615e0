// SPDX-License-Identifier: MIT
// What devices are to have: files and --set options, read and checked before a controller is asked.
#pragma once

#include "apply/options.h"
#include "documents/setting_table.h"

#include <map>
#include <string>
#include <vector>

// Which elements of an array a --set is for.
struct Selector {
    enum Kind : uint8_t { position, every, matching } kind = position;
    size_t number = 0;         // of position
    std::string member, value; // of matching: the name below the element, and its value as text
    std::string text;          // as it was given, without brackets
};

// The settings of a file, or one that a --set gives, for a kind of device.
struct Document {
    std::string name; // for messages
    DeviceKind kind = DEVICE_ACCESS_POINT;
    std::string items;               // in wire form, with the positions in the file
    std::string refusal;             // why no device can have it; empty: they can
    bool is_own = false;             // for one device
    bool is_set = false;             // of a --set; its positions are nothing, see `selectors`
    bool is_undo = false;            // all of its members, as they were
    std::vector<Selector> selectors; // one for each array on the way
};

struct Sources {
    std::vector<Document> layers, sets;       // in their order; of both kinds for some files
    std::map<Mac, std::vector<Document>> own; // one, or one for each kind
    std::vector<std::string> notes;

    // Those for a device, in the order in which they are laid over its configuration.
    std::vector<const Document *> of(const Mac &mac, DeviceKind kind) const;

    // The name of its own file; empty when it has none.
    std::string own_name(const Mac &mac) const;
};

// Reads and checks all of them, and prints what is wrong. Throws UsageError when anything is.
Sources read_sources(const ApplySettings &settings, const std::vector<const char *> &operands);
