// SPDX-License-Identifier: MIT
// Temporary files with predictable names in a directory that others write to as well.
#pragma once

#include <cstddef>

// A file that this process alone created: whatever had the name before is removed first, or renamed
// where it cannot be removed (a directory), links are not followed, nobody else may read it (mode
// 0600). It is removed when the object goes.
class TempFile {
public:
    // Creates the file; `path` must outlive the object. Prints nothing.
    explicit TempFile(const char *path);
    TempFile(const TempFile &) = delete;
    TempFile &operator=(const TempFile &) = delete;
    ~TempFile();

    bool created() const { return created_; }
    bool write(const void *bytes, size_t length); // once; false when it fails
    const char *path() const { return path_; }

private:
    const char *path_;
    bool created_;
};

// Writes RANDOM_NAME_LENGTH hexadecimal digits that nobody can guess, and a terminator.
enum : size_t { RANDOM_NAME_LENGTH = 16 };
void write_random_name(char (&name)[RANDOM_NAME_LENGTH + 1]);
