// SPDX-License-Identifier: MIT
// Faults for a zov that is linked with --wrap for the calls below. The environment chooses them:
//
//     FAULT_ALLOC=N       the Nth allocation fails
//     FAULT_SEND=N        the Nth send fails with FAULT_ERRNO (a number)
//     FAULT_RECV=N        likewise a receive
//     FAULT_SOCKET=1      no socket can be had
//     FAULT_CLOSE=1       every close reports an error
//     FAULT_ONE_BYTE=1    every transfer moves one byte
//     FAULT_EINTR=1       every second transfer is interrupted before it moves anything
//     FAULT_TIMER=1       a signal every 100 microseconds from the first transfer on
//     FAULT_LOG=FILE      is created when a fault was met
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/time.h>
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
WRAPPED(int, close, int fd)
WRAPPED(ssize_t, send, int socket, const void *bytes, size_t length, int flags)
WRAPPED(ssize_t, recv, int socket, void *bytes, size_t length, int flags)
}

static long setting(const char *name)
{
    const char *value = getenv(name);
    return value == nullptr ? 0 : atol(value);
}

static bool met()
{
    if (const char *log = getenv("FAULT_LOG"))
        __real_close(open(log, O_CREAT | O_WRONLY, 0600));
    return true;
}

// What comes before main and after it is not zov's, such as coverage figures that are written.
static bool in_main;

int __wrap_main(int count, char **words)
{
    in_main = true;
    const int status = __real_main(count, words);
    in_main = false;
    return status;
}

static bool allocation_fails()
{
    static long count;
    return in_main && ++count == setting("FAULT_ALLOC") && met();
}

void *__wrap_malloc(size_t size)
{
    return allocation_fails() ? nullptr : __real_malloc(size);
}

void *__wrap_realloc(void *old, size_t size)
{
    return allocation_fails() ? nullptr : __real_realloc(old, size);
}

void *__wrap_mmap(void *at, size_t size, int protection, int flags, int fd, off_t offset)
{
    return allocation_fails() ? MAP_FAILED : __real_mmap(at, size, protection, flags, fd, offset);
}

void *__wrap_mremap(void *old, size_t size, size_t new_size, int flags, void *to)
{
    return allocation_fails() ? MAP_FAILED : __real_mremap(old, size, new_size, flags, to);
}

int __wrap_socket(int domain, int type, int protocol)
{
    if (setting("FAULT_SOCKET") == 0 || !met())
        return __real_socket(domain, type, protocol);
    errno = EMFILE;
    return -1;
}

int __wrap_close(int fd)
{
    if (setting("FAULT_CLOSE") == 0 || !met())
        return __real_close(fd);
    __real_close(fd);
    errno = EIO;
    return -1;
}

static void start_timer()
{
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, nullptr);
    const itimerval every = {{0, 100}, {0, 100}};
    setitimer(ITIMER_REAL, &every, nullptr);
    met();
}

// Sets errno and returns true when this transfer is to fail.
static bool transfer_fails(const char *which, long &count)
{
    static bool timer, interrupted;
    if (!timer && setting("FAULT_TIMER") != 0)
        start_timer();
    timer = true;
    if (setting("FAULT_EINTR") != 0 && (interrupted = !interrupted) && met()) {
        errno = EINTR;
        return true;
    }
    if (++count != setting(which))
        return false;
    errno = static_cast<int>(setting("FAULT_ERRNO"));
    return met();
}

static size_t shortened(size_t length)
{
    return setting("FAULT_ONE_BYTE") != 0 && length > 1 && met() ? 1 : length;
}

ssize_t __wrap_send(int socket, const void *bytes, size_t length, int flags)
{
    static long count;
    return transfer_fails("FAULT_SEND", count)
               ? -1
               : __real_send(socket, bytes, shortened(length), flags);
}

ssize_t __wrap_recv(int socket, void *bytes, size_t length, int flags)
{
    static long count;
    return transfer_fails("FAULT_RECV", count)
               ? -1
               : __real_recv(socket, bytes, shortened(length), flags);
}
