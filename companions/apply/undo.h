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

// The documents of such a file, each for its device. Throws UsageError for any other file, and for
// one of another user.
std::map<Mac, std::vector<Document>> read_undo(const char *path);
