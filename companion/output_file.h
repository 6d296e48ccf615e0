// SPDX-License-Identifier: MIT
// Where the programs beside zov write: standard output, or a file that has its old contents until
// the new ones are whole.
#pragma once

#include <string>
#include <string_view>

// Every write is checked: put() and finish() throw Failure, which names the file, for what the
// system does not take. Without finish() a regular file stays as it was, whatever ends the program.
class OutputFile {
public:
    // Null: standard output. A path that is there and no regular file (a device, a FIFO) is written
    // to directly; links are followed. The file that is replaced keeps its mode.
    explicit OutputFile(const char *path);
    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;
    ~OutputFile();

    void put(std::string_view bytes);

    // Writes what is left and gives a new file its name. To be called once, as the last.
    void finish();

private:
    void write_all(std::string_view bytes);
    void open_beside(const std::string &path);
    void take_name();
    [[noreturn]] void fail(const char *what, int error) const;

    std::string name_;   // for messages
    std::string target_; // the name that the file gets; empty if it is written to directly
    std::string beside_; // its name until then; empty while it has none
    int fd_ = 1;
    std::string buffer_;
};
