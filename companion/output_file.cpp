// SPDX-License-Identifier: MIT
#include "output_file.h"

#include "failure.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

enum : size_t { BUFFER_MAX = 65536 };
enum : mode_t { MODE_NEW = 0666 };

// The path behind its links; the path itself when there is nothing yet.
static std::string resolve(const char *path)
{
    const std::unique_ptr<char, decltype(&free)> real(realpath(path, nullptr), free);
    return real != nullptr ? real.get() : path;
}

OutputFile::OutputFile(const char *path) : name_(path != nullptr ? path : "standard output")
{
    buffer_.reserve(BUFFER_MAX);
    if (path == nullptr)
        return;
    struct stat there;
    if (stat(path, &there) == 0 && !S_ISREG(there.st_mode)) {
        fd_ = open(path, O_WRONLY | O_CLOEXEC);
        if (fd_ < 0)
            fail("open", errno);
        return;
    }
    open_beside(resolve(path));
}

// A file without a name leaves nothing behind, whatever ends the program; where the file system
// has none, a temporary name is the best there is.
void OutputFile::open_beside(const std::string &path)
{
    target_ = path;
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "."
                               : slash == 0               ? "/"
                                                          : path.substr(0, slash);
    fd_ = open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, MODE_NEW);
    if (fd_ < 0 && (errno == EOPNOTSUPP || errno == EISDIR)) {
        beside_ = path + ".XXXXXX";
        fd_ = mkostemp(beside_.data(), O_CLOEXEC);
        if (fd_ < 0)
            beside_.clear();
    }
    if (fd_ < 0)
        fail("create", errno);
    struct stat there;
    if (stat(path.c_str(), &there) == 0) {
        fchmod(fd_, there.st_mode & 07777);
    } else if (!beside_.empty()) {
        const mode_t mask = umask(0);
        umask(mask);
        fchmod(fd_, MODE_NEW & ~mask);
    }
}

OutputFile::~OutputFile()
{
    if (!beside_.empty())
        unlink(beside_.c_str());
    if (fd_ > 1)
        close(fd_);
}

void OutputFile::put(std::string_view bytes)
{
    if (buffer_.size() + bytes.size() > BUFFER_MAX) {
        write_all(buffer_);
        buffer_.clear();
        if (bytes.size() > BUFFER_MAX) {
            write_all(bytes);
            return;
        }
    }
    buffer_ += bytes;
}

void OutputFile::write_all(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(fd_, bytes.data(), bytes.size());
        if (written < 0 && errno == EAGAIN) { // others have made it non-blocking
            pollfd ready = {fd_, POLLOUT, 0};
            poll(&ready, 1, -1);
        } else if (written < 0 && errno != EINTR) {
            fail("write", errno);
        } else if (written > 0) {
            bytes.remove_prefix(static_cast<size_t>(written));
        }
    }
}

void OutputFile::finish()
{
    write_all(buffer_);
    buffer_.clear();
    if (!target_.empty())
        take_name();
    if (fd_ > 1 && close(std::exchange(fd_, -1)) != 0)
        fail("write", errno);
}

// The new contents are on the disk before they get the name. A link cannot replace a file, so one
// without a name gets a temporary one first.
void OutputFile::take_name()
{
    if (fsync(fd_) != 0)
        fail("write", errno);
    if (beside_.empty()) {
        const std::string open_file = "/proc/self/fd/" + std::to_string(fd_);
        beside_ = target_ + "." + std::to_string(getpid()) + ".new";
        unlink(beside_.c_str()); // of a process that is gone
        if (linkat(AT_FDCWD, open_file.c_str(), AT_FDCWD, beside_.c_str(), AT_SYMLINK_FOLLOW) !=
            0) {
            const int error = errno;
            beside_.clear();
            fail("create", error);
        }
    }
    if (rename(beside_.c_str(), target_.c_str()) != 0)
        fail("replace", errno);
    beside_.clear();
}

void OutputFile::fail(const char *what, int error) const
{
    throw Failure(with_reason(std::string("cannot ") + what + " " + name_, error));
}
