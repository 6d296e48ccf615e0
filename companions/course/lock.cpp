// SPDX-License-Identifier: MIT
#include "course/lock.h"

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/sysmacros.h>

// Opens the file, or makes it; none, with errno set, when it cannot be had. It is not opened with
// O_CREAT where it is, since the kernel may refuse that for files of other users (proc(5),
// protected_regular).
static Descriptor open_lock_file(const std::string &path)
{
    constexpr int FLAGS = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    for (int attempt = 0; attempt < 3; attempt++) {
        Descriptor file(open(path.c_str(), FLAGS));
        if (file || errno != ENOENT)
            return file;
        file = Descriptor(open(path.c_str(), FLAGS | O_CREAT | O_EXCL, 0644));
        if (file)
            fchmod(file.get(), 0644); // whatever umask(2) is: others have to open it
        if (file || errno != EEXIST)
            return file;
    }
    return Descriptor();
}

// Whether something is there; throws when that is no regular file.
static bool is_there(const std::string &path)
{
    struct stat state = {};
    if (lstat(path.c_str(), &state) != 0)
        return false;
    if (!S_ISREG(state.st_mode))
        throw Failure("cannot lock " + path + ": it is no regular file, and belongs to user " +
                      std::to_string(state.st_uid));
    return true;
}

static Descriptor find_lock_file(const std::string &name, std::string &path)
{
    std::string refusals;
    for (const char *directory :
         {"/run/lock", static_cast<const char *>(getenv("XDG_RUNTIME_DIR"))}) {
        if (directory == nullptr || *directory != '/')
            continue;
        path = std::string(directory) + "/" + name;
        is_there(path);
        Descriptor file = open_lock_file(path);
        const int error = errno;
        if (file)
            return file;
        refusals += (refusals.empty() ? "" : "; ") + with_reason("cannot open " + path, error);
        if (is_there(path))
            break;
    }
    throw Failure(refusals + "; a lock is needed there");
}

// The process that holds a lock on the file, as proc_locks(5) has it; 0 when it cannot be told.
static int holder_of(const struct stat &file)
{
    const std::unique_ptr<FILE, int (*)(FILE *)> locks(fopen("/proc/locks", "re"), fclose);
    char line[256];
    while (locks && fgets(line, sizeof line, locks.get()) != nullptr) {
        int process = 0;
        unsigned device[2] = {};
        uintmax_t inode = 0;
        if (sscanf(line, "%*s FLOCK %*s %*s %d %x:%x:%" SCNuMAX, &process, &device[0], &device[1],
                   &inode) == 4 &&
            inode == file.st_ino && makedev(device[0], device[1]) == file.st_dev && process > 0)
            return process;
    }
    return 0;
}

ControllerLock::ControllerLock(const Endpoint &endpoint)
{
    std::string path;
    file_ = find_lock_file(
        std::string("zov-") + endpoint.address + "-" + std::to_string(endpoint.port), path);
    struct stat state = {};
    if (fstat(file_.get(), &state) != 0)
        throw Failure(with_reason("cannot lock " + path, errno));
    if (flock(file_.get(), LOCK_EX | LOCK_NB) == 0)
        return;
    if (errno != EWOULDBLOCK)
        throw Failure(with_reason("cannot lock " + path, errno));
    const int process = holder_of(state);
    throw Failure((process > 0 ? "process " + std::to_string(process) : "another process") +
                  " is changing devices of " + controller_name(endpoint) + ", see " + path);
}
