// SPDX-License-Identifier: MIT
#include "util/output.h"

#include <cerrno>
#include <cstdio>
#include <poll.h>
#include <unistd.h>

constinit Output standard_output;

// A descriptor that others have made non-blocking takes nothing while its reader is slow.
static void wait_until_writable(int fd)
{
    pollfd ready = {fd, POLLOUT, 0};
    poll(&ready, 1, -1);
}

static void write_all(const char *bytes, size_t length)
{
    while (length > 0) {
        const ssize_t written = write(STDOUT_FILENO, bytes, length);
        if (written < 0 && errno == EAGAIN)
            wait_until_writable(STDOUT_FILENO);
        if (written < 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        if (written <= 0)
            return;
        bytes += written;
        length -= static_cast<size_t>(written);
    }
}

void Output::put(const char *bytes, size_t length)
{
    if (sizeof buffer_ - used_ < length) {
        flush();
        if (length > sizeof buffer_) {
            write_all(bytes, length);
            return;
        }
    }
    memcpy(buffer_ + used_, bytes, length);
    used_ += length;
}

void Output::flush()
{
    write_all(buffer_, used_);
    used_ = 0;
}

void print_message(const char *format, va_list arguments)
{
    standard_output.flush();
    wait_until_writable(STDERR_FILENO);
    vfprintf(stderr, format, arguments);
}

int fail(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    print_message(format, arguments);
    va_end(arguments);
    return 1;
}
