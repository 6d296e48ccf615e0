// SPDX-License-Identifier: MIT
// Many files in one directory, each replaced as a whole, with one wait for the disk for all of
// them.
#pragma once

#include "common/trusted_files.h"

#include <string>
#include <string_view>
#include <vector>

// The files are written into the subdirectory .zov-export.PID, which is removed at the end, and get
// their places when all of them are on the disk. A run that was killed leaves the subdirectory; the
// next run of the same user removes it.
class DirectoryOutput {
public:
    // Throws Failure for a directory that cannot be had, or is not to be trusted.
    explicit DirectoryOutput(const std::string &path);
    DirectoryOutput(const DirectoryOutput &) = delete;
    DirectoryOutput &operator=(const DirectoryOutput &) = delete;
    ~DirectoryOutput();

    // Adds a file with mode 0600, or that of the file that it replaces. One that cannot be written
    // is reported on standard error and left out; without space on the disk it throws Failure.
    void add(const std::string &name, std::string_view contents);

    // Gives the files their places; false when some were left out. To be called once, as the last.
    bool finish();

private:
    void remove_leftovers();
    int write_file(const std::string &name, std::string_view contents);
    void report(const char *what, const std::string &name, int error);

    std::string path_, own_name_;
    Descriptor directory_, own_; // own_ is the subdirectory
    std::vector<std::string> names_;
    bool whole_ = true;
};
