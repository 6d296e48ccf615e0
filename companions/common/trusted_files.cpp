// SPDX-License-Identifier: MIT
#include "common/trusted_files.h"

#include "common/command_line.h"
#include "util/temp_file.h"

#include <cerrno>
#include <fcntl.h>
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

bool is_trusted(const struct stat &file)
{
    return file.st_uid == geteuid() || file.st_uid == 0;
}

static void check_owner(const Descriptor &file, const std::string &name)
{
    struct stat state = {};
    if (fstat(file.get(), &state) != 0)
        throw Failure(with_reason("cannot open " + name, errno));
    if (!is_trusted(state))
        throw Failure("cannot open " + name + ": it belongs to another user");
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
    check_owner(found, name);
    const std::string path = "/proc/self/fd/" + std::to_string(found.get());
    Descriptor file(open(path.c_str(), FLAGS | flags));
    if (!file && errno == ENXIO)
        throw Failure("cannot open " + name + ": no process reads from it");
    if (!file)
        throw Failure(with_reason("cannot open " + name, errno));
    return made_blocking(std::move(file));
}

Descriptor open_log(const char *path)
{
    const Descriptor found(open(path, O_PATH | O_CLOEXEC));
    if (found)
        return open_found(found, O_APPEND, path);
    Descriptor made;
    if (errno == ENOENT)
        made = Descriptor(open(path, FLAGS | O_APPEND | O_CREAT, 0600));
    if (!made)
        throw Failure(with_reason(std::string("cannot open ") + path, errno));
    check_owner(made, path); // somebody may have been faster
    return made_blocking(std::move(made));
}

// Whether users who are not trusted can rename and remove what is in a directory.
static bool lets_others_write(const struct stat &directory)
{
    return (directory.st_mode & S_ISVTX) == 0 &&
           ((directory.st_mode & S_IWOTH) != 0 ||
            ((directory.st_mode & S_IWGRP) != 0 && directory.st_gid != getegid()));
}

Descriptor open_directory(const std::string &path)
{
    if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST)
        throw Failure(with_reason("cannot create " + path, errno));
    Descriptor directory(open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    struct stat state = {};
    if (!directory || fstat(directory.get(), &state) != 0)
        throw Failure(with_reason("cannot open " + path, errno));
    if (!is_trusted(state))
        throw Failure("cannot use " + path + ": it belongs to another user");
    if (lets_others_write(state))
        throw Failure("cannot use " + path + ": others can write to it");
    return directory;
}

std::string random_name()
{
    char name[RANDOM_NAME_LENGTH + 1];
    write_random_name(name);
    return name;
}
