// SPDX-License-Identifier: MIT
#include "common/trusted_files.h"

#include "common/command_line.h"
#include "util/temp_file.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/sysmacros.h>
#include <sys/xattr.h>
#include <unistd.h>

Descriptor::~Descriptor()
{
    close();
}

int Descriptor::close()
{
    return fd_ >= 0 && ::close(std::exchange(fd_, -1)) != 0 ? errno : 0;
}

int inherited_descriptor(std::string_view path)
{
    if (path == "-" || path == "/dev/stdout")
        return STDOUT_FILENO;
    if (path == "/dev/stderr")
        return STDERR_FILENO;
    for (const std::string_view directory : {"/dev/fd/", "/proc/self/fd/"}) {
        int number = 0;
        if (path.starts_with(directory) &&
            take_number(std::string(path.substr(directory.size())).c_str(), 0,
                        std::numeric_limits<int>::max(), number))
            return number;
    }
    return -1;
}

std::string proc_path(const Descriptor &file)
{
    return "/proc/self/fd/" + std::to_string(file.get());
}

static bool is_trusted(const struct stat &file)
{
    return file.st_uid == geteuid() || file.st_uid == 0;
}

// Devices whose nodes root alone can make, and that are not root's in a user namespace.
static bool is_everybodys_device(const struct stat &file)
{
    enum : unsigned { MEMORY_DEVICES = 1, TERMINAL_DEVICES = 5 };
    return S_ISCHR(file.st_mode) &&
           (major(file.st_rdev) == MEMORY_DEVICES || file.st_rdev == makedev(TERMINAL_DEVICES, 0));
}

static struct stat state_of(const Descriptor &file, const std::string &name)
{
    struct stat state = {};
    if (fstat(file.get(), &state) != 0)
        throw Failure(with_reason("cannot open " + name, errno));
    return state;
}

static void check_owner(const struct stat &file, const std::string &name)
{
    if (!is_trusted(file) && !is_everybodys_device(file))
        throw Failure("cannot open " + name + ": it belongs to another user");
}

static bool has_access_list(const Descriptor &file)
{
    return getxattr(proc_path(file).c_str(), "system.posix_acl_access", nullptr, 0) > 0;
}

Descriptor find_file(int at, const std::string &path, const std::string &name)
{
    Descriptor found(openat(at, path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (found && S_ISLNK(state_of(found, name).st_mode)) {
        check_owner(state_of(found, name), name);
        found = Descriptor(openat(at, path.c_str(), O_PATH | O_CLOEXEC));
    }
    if (!found && errno != ENOENT)
        throw Failure(with_reason("cannot open " + name, errno));
    return found;
}

// What was opened without blocking, from now on with it.
static Descriptor made_blocking(Descriptor file)
{
    fcntl(file.get(), F_SETFL, fcntl(file.get(), F_GETFL) & ~O_NONBLOCK);
    return file;
}

constexpr int FLAGS = O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

Descriptor open_found(const Descriptor &found, int flags, const std::string &name)
{
    const struct stat state = state_of(found, name);
    check_owner(state, name);
    Descriptor file(open(proc_path(found).c_str(), FLAGS | flags));
    if (!file && errno == ENXIO && S_ISFIFO(state.st_mode))
        throw Failure("cannot open " + name + ": no process reads from it");
    if (!file)
        throw Failure(with_reason("cannot open " + name, errno));
    return made_blocking(std::move(file));
}

Descriptor open_log(const char *path)
{
    const Descriptor found = find_file(AT_FDCWD, path, path);
    if (found)
        return open_found(found, O_APPEND, path);
    Descriptor made(open(path, FLAGS | O_APPEND | O_CREAT, 0600));
    if (!made)
        throw Failure(with_reason(std::string("cannot open ") + path, errno));
    check_owner(state_of(made, path), path); // somebody may have been faster
    return made_blocking(std::move(made));
}

void take_over_mode(int file, const Descriptor &old)
{
    struct stat before = {}, now = {};
    if (fstat(old.get(), &before) != 0 || fstat(file, &now) != 0 || !S_ISREG(before.st_mode) ||
        before.st_uid != geteuid() || before.st_nlink != 1 || has_access_list(old))
        return;
    mode_t mode = before.st_mode & 0777;
    if (now.st_gid != before.st_gid && fchown(file, now.st_uid, before.st_gid) != 0)
        mode &= ~mode_t{S_IRWXG};
    fchmod(file, mode);
}

// Whether users who are not trusted can rename and remove what is in a directory. With an access
// control list the group's bits are the most that it gives to anybody.
static bool lets_others_write(const struct stat &directory, bool has_list)
{
    return (directory.st_mode & S_ISVTX) == 0 &&
           ((directory.st_mode & S_IWOTH) != 0 ||
            ((directory.st_mode & S_IWGRP) != 0 && (has_list || directory.st_gid != getegid())));
}

Descriptor open_directory(const std::string &path)
{
    if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST)
        throw Failure(with_reason("cannot create " + path, errno));
    const size_t end = path.find_last_not_of('/'); // a link would be followed for the sake of the /
    Descriptor directory =
        find_file(AT_FDCWD, end == std::string::npos ? path : path.substr(0, end + 1), path);
    if (!directory)
        throw Failure(with_reason("cannot open " + path, ENOENT));
    const struct stat state = state_of(directory, path);
    if (!S_ISDIR(state.st_mode))
        throw Failure(with_reason("cannot open " + path, ENOTDIR));
    if (!is_trusted(state))
        throw Failure("cannot use " + path + ": it belongs to another user");
    if (lets_others_write(state, has_access_list(directory)))
        throw Failure("cannot use " + path + ": others can write to it");
    return directory;
}

int write_all(int file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written < 0 && errno == EAGAIN) { // others have made it non-blocking
            pollfd ready = {file, POLLOUT, 0};
            poll(&ready, 1, -1);
        } else if (written < 0 && errno != EINTR) {
            return errno;
        } else if (written > 0) {
            bytes.remove_prefix(static_cast<size_t>(written));
        }
    }
    return 0;
}

std::string random_name()
{
    char name[RANDOM_NAME_LENGTH + 1];
    write_random_name(name);
    return name;
}
