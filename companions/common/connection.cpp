// SPDX-License-Identifier: MIT
#include "common/connection.h"

#include "common/stored_message.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <netinet/in.h>
#include <new>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

enum : uint32_t { WHOLE_REPLY = 10 }; // how many times the time-out a whole reply may take
enum : uint64_t { REPLY_MAX = uint64_t{1} << 30 }; // bytes

using Clock = std::chrono::steady_clock;

// A session that receives with the limits of a companion tool.
struct Connection::Session : AcSession {
    StoredMessage message;
    ssize_t (*receive_plainly)(ByteSource &source, void *to, size_t size) = nullptr;
    Clock::duration patience;
    Clock::time_point end;
    uint64_t received = 0; // behind the handshake

    static ssize_t receive_within_limits(ByteSource &source, void *to, size_t size)
    {
        auto &self = static_cast<Session &>(source);
        if (self.received > REPLY_MAX) {
            errno = EFBIG;
            return -1;
        }
        if (!self.wait())
            return -1;
        const ssize_t got = self.receive_plainly(source, to, size);
        if (got > 0)
            self.received += static_cast<uint64_t>(got);
        return got;
    }

private:
    // Until something can be received; false, with errno set, when that takes too long.
    bool wait() const
    {
        using std::chrono::ceil, std::chrono::milliseconds;
        const Clock::time_point limit = std::min(end, Clock::now() + patience);
        for (;;) {
            const auto left = ceil<milliseconds>(limit - Clock::now()).count();
            pollfd ready = {socket, POLLIN, 0};
            const int count = poll(&ready, 1, static_cast<int>(std::max<int64_t>(left, 0)));
            if (count > 0)
                return true;
            if (count == 0)
                errno = limit == end ? ETIME : EAGAIN;
            if (count == 0 || errno != EINTR)
                return false;
        }
    }
};

bool take_address(const char *text, Endpoint &endpoint)
{
    in_addr address;
    endpoint.address = text;
    return inet_pton(AF_INET, text, &address) == 1;
}

bool take_port(const char *text, Endpoint &endpoint)
{
    return take_number<uint16_t>(text, 1, UINT16_MAX, endpoint.port);
}

bool take_timeout(const char *text, Endpoint &endpoint)
{
    return take_number<uint32_t>(text, 1, 86400, endpoint.timeout);
}

static std::string name_of(const Endpoint &endpoint)
{
    return std::string("the controller at ") + endpoint.address + ":" +
           std::to_string(endpoint.port);
}

[[noreturn]] static void fail_silent(const Endpoint &endpoint)
{
    throw Failure(name_of(endpoint) + " does not answer within " +
                      std::to_string(endpoint.timeout) + " s",
                  Cause::silent);
}

[[noreturn]] static void fail_unreachable(const Endpoint &endpoint, int error)
{
    throw Failure(with_reason("cannot connect to " + name_of(endpoint), error), Cause::unreachable);
}

// Goes on with a connect(2) that a signal interrupted. Returns 0 or the errno of its end.
static int finish_connecting(int fd, const Endpoint &endpoint)
{
    pollfd ready = {fd, POLLOUT, 0};
    int error = EINPROGRESS, count;
    socklen_t size = sizeof error;
    do
        count = poll(&ready, 1, static_cast<int>(endpoint.timeout * 1000));
    while (count < 0 && errno == EINTR);
    if (count > 0)
        getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size);
    return error;
}

// A connected socket whose sends wait for the time-out at most.
static int connect_to(const Endpoint &endpoint)
{
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        fail_unreachable(endpoint, errno);
    const timeval patience = {static_cast<time_t>(endpoint.timeout), 0};
    setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience); // of connect(2) as well
    sockaddr_in there = {};
    there.sin_family = AF_INET;
    there.sin_port = htons(endpoint.port);
    inet_pton(AF_INET, endpoint.address, &there.sin_addr);
    int error = 0;
    if (connect(fd, reinterpret_cast<const sockaddr *>(&there), sizeof there) != 0)
        error = errno == EINTR ? finish_connecting(fd, endpoint) : errno;
    if (error == 0)
        return fd;
    close(fd);
    if (error == EINPROGRESS || error == EAGAIN)
        fail_silent(endpoint);
    fail_unreachable(endpoint, error);
}

Connection::Connection(const Endpoint &endpoint) : session_(new Session), endpoint_(endpoint)
{
    ac_attach(*session_, connect_to(endpoint));
    session_->receive_plainly = session_->receive;
    session_->receive = Session::receive_within_limits;
    session_->messages = session_->message.sink();
    session_->patience = std::chrono::seconds(endpoint.timeout);
    session_->end = Clock::now() + WHOLE_REPLY * session_->patience;
    if (ac_admit(*session_) != 0) {
        close(session_->socket);
        fail();
    }
    session_->received = 0;
}

Connection::~Connection()
{
    ac_disconnect(*session_);
}

void Connection::fetch(WtpList &list, uint32_t filter, const MacList &macs)
{
    if (fetch_wtp_list(*session_, list, filter, macs) != 0)
        fail();
}

AcSession &Connection::session()
{
    return *session_;
}

void Connection::fail() const
{
    const StoredMessage &message = session_->message;
    const auto failure = [&](const std::string &text) { return Failure(text, message.cause); };
    const std::string name = name_of(endpoint_);
    switch (message.cause) {
    case Cause::no_memory:
        throw std::bad_alloc();
    case Cause::busy:
        throw failure(name + " is busy, try again later");
    case Cause::refused:
        throw failure(name + " refuses: answer " + std::to_string(message.detail));
    case Cause::ended:
        throw failure(name + " ended the connection after " + std::to_string(session_->received) +
                      " bytes");
    case Cause::not_received:
    case Cause::not_sent:
        if (message.detail == EAGAIN)
            fail_silent(endpoint_);
        if (message.detail == ETIME)
            throw Failure(name + " does not complete its reply within " +
                              std::to_string(WHOLE_REPLY * endpoint_.timeout) + " s",
                          Cause::silent);
        if (message.detail == EFBIG)
            throw Failure("the reply of " + name + " is longer than 1 GiB", Cause::too_long);
        throw failure(with_reason(
            (message.cause == Cause::not_sent ? "cannot send to " : "cannot receive from ") + name,
            message.detail));
    case Cause::other:
    case Cause::unreachable:
    case Cause::silent:
    case Cause::too_long:
        break;
    }
    std::string text = message.text;
    if (text.ends_with('\n'))
        text.pop_back();
    throw failure(text);
}
