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

#define WRAPPED(type, name, ...)                                                                   \
    type __real_##name(__VA_ARGS__);                                                               \
    type __wrap_##name(__VA_ARGS__);
extern "C" {
WRAPPED(int, main, int count, char **words)
WRAPPED(void *, malloc, size_t size)
WRAPPED(void *, realloc, void *old, size_t size)
WRAPPED(void *, mmap, void *at, size_t size, int protection, int flags, int fd, off_t offset)
WRAPPED(void *, mremap, void *old, size_t size, size_t new_size, int flags, void *to)
WRAPPED(int, socket, int domain, int type, int protocol)
WRAPPED(int, open, const char *path, int flags, mode_t mode)
WRAPPED(int, close, int fd)
WRAPPED(ssize_t, send, int socket, const void *bytes, size_t length, int flags)
WRAPPED(ssize_t, recv, int socket, void *bytes, size_t length, int flags)
}

// Empty before main and after it: what is called there is not zov's, such as coverage figures that
// are written.
static char chosen[8];
static long number;
static int error;

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

int __wrap_main(int count, char **words)
{
    if (const char *fault = getenv("FAULT"))
        sscanf(fault, "%7s %ld %d", chosen, &number, &error);
    const int status = __real_main(count, words);
    chosen[0] = '\0';
    return status;
}

void *__wrap_malloc(size_t size)
{
    return fails("alloc") ? nullptr : __real_malloc(size);
}

void *__wrap_realloc(void *old, size_t size)
{
    return fails("alloc") ? nullptr : __real_realloc(old, size);
}

void *__wrap_mmap(void *at, size_t size, int protection, int flags, int fd, off_t offset)
{
    return fails("alloc") ? MAP_FAILED : __real_mmap(at, size, protection, flags, fd, offset);
}

void *__wrap_mremap(void *old, size_t size, size_t new_size, int flags, void *to)
{
    return fails("alloc") ? MAP_FAILED : __real_mremap(old, size, new_size, flags, to);
}

int __wrap_socket(int domain, int type, int protocol)
{
    return fails("socket") ? -1 : __real_socket(domain, type, protocol);
}

int __wrap_open(const char *path, int flags, mode_t mode)
{
    return fails("open") ? -1 : __real_open(path, flags, mode);
}

int __wrap_close(int fd)
{
    const int status = __real_close(fd);
    return fails("close") ? -1 : status;
}

// Returns true when this transfer is to fail; shortens its length.
static bool transfer_fails(const char *call, size_t &length)
{
    static bool interrupted;
    if (strcmp(chosen, "short") != 0)
        return fails(call);
    length = length > 1 ? 1 : length;
    error = EINTR;
    return (interrupted = !interrupted) && met();
}

ssize_t __wrap_send(int socket, const void *bytes, size_t length, int flags)
{
    return transfer_fails("send", length) ? -1 : __real_send(socket, bytes, length, flags);
}

ssize_t __wrap_recv(int socket, void *bytes, size_t length, int flags)
{
    return transfer_fails("recv", length) ? -1 : __real_recv(socket, bytes, length, flags);
}
