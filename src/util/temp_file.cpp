// SPDX-License-Identifier: MIT
#include "util/temp_file.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

void write_random_name(char (&name)[RANDOM_NAME_LENGTH + 1])
{
    uint64_t number = 0;
    if (getrandom(&number, sizeof number, 0) != sizeof number)
        number =
            static_cast<uint64_t>(getpid()); // a kernel without it; names are taken exclusively
    snprintf(name, sizeof name, "%016llx", static_cast<unsigned long long>(number));
}

// Others can put a directory in the way, which unlink(2) does not remove.
static void clear_name(const char *path)
{
    if (unlink(path) == 0 || errno == ENOENT)
        return;
    char name[RANDOM_NAME_LENGTH + 1], aside[128];
    write_random_name(name);
    snprintf(aside, sizeof aside, "%s.%s", path, name);
    rename(path, aside);
}

static bool create(const char *path)
{
    clear_name(path);
    const int fd = open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0)
        return false;
    close(fd);
    return true;
}

TempFile::TempFile(const char *path) : path_(path), created_(create(path)) {}

bool TempFile::write(const void *bytes, size_t length)
{
    const int fd = open(path_, O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool written = ::write(fd, bytes, length) == static_cast<ssize_t>(length);
    return close(fd) == 0 && written;
}

TempFile::~TempFile()
{
    if (created_)
        unlink(path_);
}
