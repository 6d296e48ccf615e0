// SPDX-License-Identifier: MIT
// Which files the companion tools write to, on a host with other users: links are followed as far
// as the kernel allows it, and what belongs to neither the caller nor root is never written to.
// Opening never blocks.
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

    // Closes it; returns 0, or the errno of close(2).
    int close();

private:
    int fd_;
};

// The descriptor of this process that a path stands for: - (standard output), /dev/stdout,
// /dev/stderr, /dev/fd/N or /proc/self/fd/N; -1 for every other path.
int inherited_descriptor(std::string_view path);

// Whether a file belongs to the caller or to root.
bool is_trusted(const struct stat &file);

// A file that is there, for writing: `found` has it opened with O_PATH, `flags` are added to
// open(2)'s. Throws Failure, with `name` for the file, when it belongs to somebody else, cannot be
// opened or is a pipe without a reader.
Descriptor open_found(const Descriptor &found, int flags, const std::string &name);

// A file that lines are added to; a new one has mode 0600. Throws Failure as open_found() does.
Descriptor open_log(const char *path);

// A directory for files of the caller's, made with mode 0700 if there is none. Throws Failure when
// it belongs to neither the caller nor root, or when others can replace what is in it: its mode
// lets everybody, or a group that is not the caller's, write to it without the sticky bit.
Descriptor open_directory(const std::string &path);

// 16 hexadecimal digits that nobody can guess.
std::string random_name();
