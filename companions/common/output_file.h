// SPDX-License-Identifier: MIT
// Where the companion tools write: standard output, or a file that has its old contents until
// the new ones are whole.
#pragma once

#include "common/trusted_files.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

// Every write is checked: put() and finish() throw Failure, which names the file, for what the
// system does not take. Without finish() a regular file stays as it was, whatever ends the program.
class OutputFile {
public:
    // Null and - are standard output, /dev/stdout, /dev/fd/N and the like a descriptor that the
    // process has; these are written to as they are. Another path that is there and no regular file
    // (a device, a pipe) is written to directly, if it belongs to the caller or root. A regular
    // file is replaced by a new one, which has the mode `mode`, less what umask(2) takes away, or
    // that of the old one, see take_over_mode().
    OutputFile(const char *path, mode_t mode);

    // A file of this name in a directory, which `path` calls for messages.
    OutputFile(const Descriptor &directory, const std::string &name, const std::string &path,
               mode_t mode);

    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;
    ~OutputFile();

    // The next `size` (at most PREPARE_MAX) bytes of the buffer, to be written and then added by
    // commit() with the end of what was written.
    char *prepare(size_t size)
    {
        if (BUFFER_SIZE - used_ < size)
            flush();
        return buffer_.get() + used_;
    }
    void commit(const char *end) { used_ = static_cast<size_t>(end - buffer_.get()); }

    void put(std::string_view bytes);
    void put(const char *bytes, size_t length) { put({bytes, length}); }
    void put(char c) { put({&c, 1}); }

    // Writes what is left and gives a new file its name. To be called once, as the last.
    void finish();

    enum : size_t { PREPARE_MAX = 4096 };

private:
    enum : size_t { BUFFER_SIZE = 65536 };

    void open(int at, const std::string &path, mode_t mode);
    void find_directory(int at, const std::string &path);
    void check_unmoved(const struct stat &found) const;
    void create(mode_t mode);
    void write(std::string_view bytes);
    void flush();
    void take_name();
    [[noreturn]] void fail(const char *what, int error) const;

    std::string name_;      // for messages
    Descriptor directory_;  // of a file that is replaced; none if it is written to directly
    std::string target_;    // the file's name in it
    std::string temporary_; // its name until then; empty while it has none
    Descriptor own_;        // what was opened here
    int fd_;                // what is written to
    std::unique_ptr<char[]> buffer_{new char[BUFFER_SIZE]};
    size_t used_ = 0;
};
