// SPDX-License-Identifier: MIT
// What devices are to have: files and --set options, read and checked before a controller is asked.
#pragma once

#include "apply/assignment.h"
#include "apply/options.h"

#include <map>
#include <string>
#include <vector>

// The settings of a file, or one that a --set gives, for a kind of device.
struct Document {
    // For all chosen devices of its kind; for one device; of a --set; what a device had before.
    enum Role : uint8_t { layer, own, set, undo } role = layer;
    std::string name; // for messages
    DeviceKind kind = DEVICE_ACCESS_POINT;
    std::string items;               // in wire form, with the positions in the file
    std::string refusal;             // why no device can have it; empty: they can
    std::vector<Selector> selectors; // of a --set, whose positions are nothing: one for each array

    [[nodiscard]] bool is_for_several() const { return role == layer || role == set; }
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
