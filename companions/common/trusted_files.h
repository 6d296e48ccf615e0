// SPDX-License-Identifier: MIT
// Which files the companion tools write to, on a host with other users: links, pipes, devices and
// logs that belong to neither the caller nor root are refused, and links of the others are followed
// as far as the kernel allows it. Opening never blocks.
#pragma once

#include <string>
#include <string_view>
#include <sys/stat.h>
#include <utility>

// Owns a file descriptor, or none (-1).
class Descriptor {
public:
    explicit Descriptor(int fd = -1) : fd_(fd) {}
    Descriptor(Descriptor &&other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~Descriptor();

    explicit operator bool() const { return fd_ >= 0; }
    [[nodiscard]] int get() const { return fd_; }

    // Gives it away.
    int release() { return std::exchange(fd_, -1); }

    // Closes it; returns 0, or the errno of close(2).
    int close();

private:
    int fd_;
};

// The path by which an open file can be opened or linked again, see proc(5).
std::string proc_path(const Descriptor &file);

// The descriptor of this process that a path stands for: - (standard output), /dev/stdout,
// /dev/stderr, /dev/fd/N or /proc/self/fd/N; -1 for every other path.
int inherited_descriptor(std::string_view path);

// What a path leads to, opened with O_PATH; none when nothing is there. `at` is a directory as
// openat(2) takes it. Throws Failure, with `name` for the file, when it cannot be reached or is a
// link of another user.
Descriptor find_file(int at, const std::string &path, const std::string &name);

// That file, for writing; `flags` are added to open(2)'s. Throws Failure when it belongs to another
// user (null(4), full(4) and tty(4) are everybody's), cannot be opened or is a pipe without a
// reader.
Descriptor open_found(const Descriptor &found, int flags, const std::string &name);

// Gives a file that replaces `old` its mode, if that is a regular file of the caller's with one
// name and without an access control list: the 0777 bits, those of the group only with the group.
void take_over_mode(int file, const Descriptor &old);

// A file that lines are added to; a new one has mode 0600. Throws Failure as open_found() does.
Descriptor open_log(const char *path);

// A directory for files of the caller's, made with mode 0700 if there is none. Throws Failure when
// it belongs to neither the caller nor root, or when others can replace what is in it: its mode
// lets everybody, or a group that is not the caller's, write to it without the sticky bit, or an
// access control list somebody.
Descriptor open_directory(const std::string &path);

// Writes all of it, waiting for a descriptor that does not wait. Returns 0, or an errno.
int write_all(int file, std::string_view bytes);

// 16 hexadecimal digits that nobody can guess.
std::string random_name();
