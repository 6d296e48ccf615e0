// SPDX-License-Identifier: MIT
#include "common/output_file.h"

#include "common/failure.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

// A short one, since the file's own may have the longest length.
static std::string temporary_name()
{
    return ".zov." + random_name();
}

OutputFile::OutputFile(const char *path, mode_t mode)
    : name_(path == nullptr ? "-" : path), fd_(inherited_descriptor(name_))
{
    if (fd_ < 0)
        open(AT_FDCWD, name_, mode);
    else if (name_ == "-")
        name_ = "standard output";
}

OutputFile::OutputFile(const Descriptor &directory, const std::string &name,
                       const std::string &path, mode_t mode)
    : name_(path + "/" + name), fd_(-1)
{
    open(directory.get(), name, mode);
}

void OutputFile::open(int at, const std::string &path, mode_t mode)
{
    const Descriptor found = find_file(at, path, name_);
    struct stat state = {};
    if (found && fstat(found.get(), &state) != 0)
        fail("open", errno);
    if (found && !S_ISREG(state.st_mode)) {
        own_ = open_found(found, 0, name_);
        fd_ = own_.get();
        return;
    }
    if (found) {
        char real[PATH_MAX];
        const ssize_t length = readlink(proc_path(found).c_str(), real, sizeof real);
        if (length < 0)
            fail("open", errno);
        find_directory(at, {real, static_cast<size_t>(length)});
        check_unmoved(state);
    } else {
        find_directory(at, path);
    }
    create(mode);
    if (found)
        take_over_mode(fd_, found);
}

void OutputFile::find_directory(int at, const std::string &path)
{
    const size_t slash = path.rfind('/');
    const std::string directory = slash == std::string::npos ? "."
                                  : slash == 0               ? "/"
                                                             : path.substr(0, slash);
    target_ = path.substr(slash + 1);
    directory_ = Descriptor(openat(at, directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!directory_)
        fail("create", errno);
}

// The file that was found is the one that will be replaced, whoever moves directories meanwhile.
void OutputFile::check_unmoved(const struct stat &found) const
{
    struct stat now = {};
    if (fstatat(directory_.get(), target_.c_str(), &now, AT_SYMLINK_NOFOLLOW) != 0 ||
        now.st_dev != found.st_dev || now.st_ino != found.st_ino)
        throw Failure("cannot open " + name_ + ": it was moved meanwhile");
}

// A file without a name leaves nothing behind, whatever ends the program; where the file system
// has none, a temporary name is the best there is.
void OutputFile::create(mode_t mode)
{
    own_ = Descriptor(openat(directory_.get(), ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, mode));
    if (!own_ && (errno == EOPNOTSUPP || errno == EISDIR)) {
        temporary_ = temporary_name();
        own_ = Descriptor(openat(directory_.get(), temporary_.c_str(),
                                 O_CREAT | O_EXCL | O_NOFOLLOW | O_WRONLY | O_CLOEXEC, mode));
        if (!own_)
            temporary_.clear();
    }
    if (!own_)
        fail("create", errno);
    fd_ = own_.get();
}

OutputFile::~OutputFile()
{
    if (!temporary_.empty())
        unlinkat(directory_.get(), temporary_.c_str(), 0);
}

void OutputFile::put(std::string_view bytes)
{
    if (BUFFER_SIZE - used_ < bytes.size()) {
        flush();
        if (bytes.size() > BUFFER_SIZE) {
            write(bytes);
            return;
        }
    }
    memcpy(buffer_.get() + used_, bytes.data(), bytes.size());
    used_ += bytes.size();
}

void OutputFile::flush()
{
    write({buffer_.get(), used_});
    used_ = 0;
}

void OutputFile::write(std::string_view bytes)
{
    if (const int error = write_all(fd_, bytes); error != 0)
        fail("write", error);
}

void OutputFile::finish()
{
    flush();
    if (directory_)
        take_name();
    if (const int error = own_.close(); error != 0)
        fail("write", error);
}

// The new contents are on the disk before they get the name. A link cannot replace a file, so one
// without a name gets a temporary one first.
void OutputFile::take_name()
{
    if (fsync(fd_) != 0)
        fail("write", errno);
    if (temporary_.empty()) {
        const std::string name = temporary_name();
        if (linkat(AT_FDCWD, proc_path(own_).c_str(), directory_.get(), name.c_str(),
                   AT_SYMLINK_FOLLOW) != 0)
            fail("create", errno);
        temporary_ = name;
    }
    if (renameat(directory_.get(), temporary_.c_str(), directory_.get(), target_.c_str()) != 0)
        fail("replace", errno);
    temporary_.clear();
}

void OutputFile::fail(const char *what, int error) const
{
    throw Failure(with_reason(std::string("cannot ") + what + " " + name_, error));
}
