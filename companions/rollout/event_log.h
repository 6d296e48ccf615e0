// SPDX-License-Identifier: MIT
// The file that gets a line for each event of a roll-out: its time (RFC 3339, UTC) and its text.
#pragma once

#include "common/trusted_files.h"

#include <string>

class EventLog {
public:
    // Null: no file; - is standard output, /dev/stderr and the like a descriptor that the process
    // has. Lines are added behind those that are there. Throws Failure when the file cannot be
    // opened or belongs to another user, and later when a line cannot be written.
    explicit EventLog(const char *path);

    void add(const std::string &text) const;

private:
    std::string path_;
    Descriptor own_; // what was opened here
    int fd_ = -1;    // what is written to
};
