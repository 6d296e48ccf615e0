// SPDX-License-Identifier: MIT
// The file that gets a line for each event: its time (RFC 3339, UTC), program, process and text.
#pragma once

#include "common/trusted_files.h"

#include <span>
#include <string>

class EventLog {
public:
    // Null: no file; - is standard output, /dev/stderr and the like a descriptor that the process
    // has. Lines are added behind those that are there. Throws Failure when the file cannot be
    // opened or belongs to another user, and later when a line cannot be written.
    EventLog(const char *path, const char *program);

    void add(const std::string &text) const;

private:
    std::string path_, sender_;
    Descriptor own_; // what was opened here
    int fd_ = -1;    // what is written to
};

// What a log opens with: the program's version, who runs it, and its command line, quoted for a
// shell, without control characters.
std::string opening_text(const char *program, std::span<const std::string> words);

// A word of a command line, quoted where a shell needs it.
std::string shell_word(const std::string &word);
