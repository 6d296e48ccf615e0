// SPDX-License-Identifier: MIT
#include "util/temp_file.h"

#include <fcntl.h>
#include <unistd.h>

static bool create(const char *path)
{
    unlink(path);
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
