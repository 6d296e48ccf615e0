// SPDX-License-Identifier: MIT
// Faults for a zov that is linked with --wrap for the calls below. The environment chooses one:
//
//     FAULT="CALL N ERRNO"   the Nth call fails: alloc, send, recv, socket, open or close
//     FAULT=short            every transfer is interrupted once, then moves one byte
//     FAULT_LOG=FILE         is created when a fault was met
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

extern "C" int __real_main(int, char **), __real_open(const char *, int, mode_t), __real_close(int);

// Empty before main and after it: what is called there is not zov's, such as coverage figures that
// are written.
static char chosen[8];
static long number;
static int error;

extern "C" int __wrap_main(int count, char **words)
{
    if (const char *fault = getenv("FAULT"))
        sscanf(fault, "%7s %ld %d", chosen, &number, &error);
    const int status = __real_main(count, words);
    chosen[0] = '\0';
    return status;
}

static bool met()
{
    __real_close(__real_open(getenv("FAULT_LOG"), O_CREAT | O_WRONLY, 0600));
    errno = error;
    return true;
}

static bool fails(const char *call)
{
    static long count;
    return strcmp(call, chosen) == 0 && ++count == number && met();
}

// The length of a transfer that is to fail is 0.
static size_t possible(const char *call, size_t length)
{
    static bool interrupted;
    if (strcmp(chosen, "short") != 0)
        return fails(call) ? 0 : length;
    error = EINTR;
    return (interrupted = !interrupted) && met() ? 0 : 1;
}

#define WRAPPED(type, name, parameters, arguments, result)                                         \
    extern "C" type __real_##name parameters;                                                      \
    extern "C" type __wrap_##name parameters                                                       \
    {                                                                                              \
        const auto real = [&] { return __real_##name arguments; };                                 \
        return result;                                                                             \
    }

WRAPPED(void *, malloc, (size_t size), (size), fails("alloc") ? nullptr : real())
WRAPPED(void *, realloc, (void *old, size_t size), (old, size), fails("alloc") ? nullptr : real())
WRAPPED(void *, mmap, (void *at, size_t size, int protection, int flags, int fd, off_t offset),
        (at, size, protection, flags, fd, offset), fails("alloc") ? MAP_FAILED : real())
WRAPPED(void *, mremap, (void *old, size_t size, size_t new_size, int flags, void *to),
        (old, size, new_size, flags, to), fails("alloc") ? MAP_FAILED : real())
WRAPPED(int, socket, (int domain, int type, int protocol), (domain, type, protocol),
        fails("socket") ? -1 : real())
WRAPPED(int, open, (const char *path, int flags, mode_t mode), (path, flags, mode),
        fails("open") ? -1 : real())
WRAPPED(int, close, (int fd), (fd), real() == 0 && !fails("close") ? 0 : -1)
WRAPPED(ssize_t, send, (int socket, const void *bytes, size_t length, int flags),
        (socket, bytes, length, flags), (length = possible("send", length)) == 0 ? -1 : real())
WRAPPED(ssize_t, recv, (int socket, void *bytes, size_t length, int flags),
        (socket, bytes, length, flags), (length = possible("recv", length)) == 0 ? -1 : real())
