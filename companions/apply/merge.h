// SPDX-License-Identifier: MIT
// Lays documents over a configuration.
#pragma once

#include "apply/sources.h"
#include "documents/config_row.h"

#include <cstdint>
#include <string>
#include <vector>

struct Overridden {
    unsigned by = 0, what = 0; // documents, counted from 1
    bool operator<(const Overridden &other) const
    {
        return by != other.by ? by < other.by : what < other.what;
    }
};

// Why a device cannot have a document: "has no radio[2]".
struct MergeProblem {
    unsigned source = 0; // the document, counted from 1
    std::string text;
};

// What came of it, besides the changed configuration.
struct MergeResult {
    std::vector<MergeProblem> problems;
    std::map<Overridden, size_t> overridden; // how many values of a document another has changed
};

// The documents one after the other. What nothing names stays: objects are laid over each other
// member by member, and so are the elements of arrays, by their port if they have one, else by
// their position. Arrays that can grow have at least the elements that a document names; those that
// the device's own file has are all.
MergeResult lay_over(ConfigRow &row, const std::vector<const Document *> &documents,
                     DeviceKind kind);

// The row that has what these items say, and nothing else.
ConfigRow row_of_items(std::string_view items, DeviceKind kind);

// Whether these are items of settings of that kind, in wire form, each with the size of its form
// and with an index for each array on the way.
bool are_items_of(DeviceKind kind, std::string_view items);
