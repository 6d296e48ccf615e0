// SPDX-License-Identifier: MIT
// The file that has what was stored before it was changed.
#pragma once

#include "apply/sources.h"

#include <string>
#include <vector>

struct SavedDevice {
    Mac mac;
    std::string name;
    DeviceKind kind = DEVICE_ACCESS_POINT;
    std::string items; // of the members that will be changed, in wire form
};

// Where a run saves; empty with --no-save. Throws UsageError when there is no place for it.
std::string undo_path(const ApplySettings &settings);

// Writes a new file that is the caller's alone, and waits until the disk has it. Throws Failure,
// also when there is such a file, and leaves none then.
void write_undo(const std::string &path, const ApplySettings &settings,
                const std::vector<SavedDevice> &devices);

// Replaces it by one for these devices, of those that it is for.
void rewrite_undo(const std::string &path, const ApplySettings &settings,
                  const std::vector<SavedDevice> &devices);

// The documents of the file of --undo, each for its device. Throws UsageError for any other file,
// and for one that others can write to.
Sources read_undo(const ApplySettings &settings);
