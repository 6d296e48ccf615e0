// SPDX-License-Identifier: MIT
#include "common/connection.h"

#include "common/stop.h"
#include "common/stored_message.h"
#include "common/trusted_files.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fcntl.h>
#include <netinet/in.h>
#include <new>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

static constexpr double WHOLE_REPLY = 10; // how many times the time-out a whole reply may take
enum : uint64_t { REPLY_MAX = uint64_t{1} << 30 }; // bytes

using Clock = std::chrono::steady_clock;

// A session that receives with the limits of a companion tool.
struct Connection::Session : AcSession {
    StoredMessage message;
    ssize_t (*receive_plainly)(ByteSource &source, void *to, size_t size) = nullptr;
    double patience = 0; // seconds
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
        const double left = std::chrono::duration<double>(end - Clock::now()).count();
        const int count = wait_for(socket, POLLIN, std::min(left, patience));
        if (count == 0)
            errno = left < patience ? ETIME : EAGAIN;
        return count > 0;
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
    return take_seconds(text, 0.1, 86400, endpoint.timeout);
}

std::string controller_name(const Endpoint &endpoint)
{
    return std::string("the controller at ") + endpoint.address + ":" +
           std::to_string(endpoint.port);
}

static std::string seconds_text(double seconds)
{
    char text[32];
    snprintf(text, sizeof text, "%g s", seconds);
    return text;
}

[[noreturn]] static void fail_silent(const Endpoint &endpoint)
{
    throw Failure(controller_name(endpoint) + " does not answer within " +
                      seconds_text(endpoint.timeout),
                  Cause::silent);
}

[[noreturn]] static void fail_unreachable(const Endpoint &endpoint, int error)
{
    throw Failure(with_reason("cannot connect to " + controller_name(endpoint), error),
                  Cause::unreachable);
}

// A connected socket whose sends wait for the time-out at most.
static int connect_to(const Endpoint &endpoint)
{
    Descriptor file(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!file)
        fail_unreachable(endpoint, errno);
    sockaddr_in there = {};
    there.sin_family = AF_INET;
    there.sin_port = htons(endpoint.port);
    inet_pton(AF_INET, endpoint.address, &there.sin_addr);
    int error = 0;
    socklen_t size = sizeof error;
    if (connect(file.get(), reinterpret_cast<const sockaddr *>(&there), sizeof there) != 0) {
        if (errno != EINPROGRESS && errno != EINTR)
            fail_unreachable(endpoint, errno);
        const int count = wait_for(file.get(), POLLOUT, endpoint.timeout);
        check_stop();
        if (count == 0)
            fail_silent(endpoint);
        if (count < 0 || getsockopt(file.get(), SOL_SOCKET, SO_ERROR, &error, &size) != 0)
            error = errno;
    }
    if (error != 0)
        fail_unreachable(endpoint, error);
    const double whole = std::floor(endpoint.timeout);
    const timeval patience = {static_cast<time_t>(whole),
                              static_cast<suseconds_t>((endpoint.timeout - whole) * 1e6)};
    setsockopt(file.get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    fcntl(file.get(), F_SETFL, fcntl(file.get(), F_GETFL) & ~O_NONBLOCK);
    return file.release();
}

Connection::Connection(const Endpoint &endpoint) : session_(new Session), endpoint_(endpoint)
{
    ac_attach(*session_, connect_to(endpoint));
    session_->receive_plainly = session_->receive;
    session_->receive = Session::receive_within_limits;
    session_->messages = session_->message.sink();
    session_->patience = endpoint.timeout;
    session_->end =
        Clock::now() + std::chrono::duration_cast<Clock::duration>(
                           std::chrono::duration<double>(WHOLE_REPLY * endpoint.timeout));
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
    check_stop();
    const StoredMessage &message = session_->message;
    const auto failure = [&](const std::string &text) { return Failure(text, message.cause); };
    const std::string name = controller_name(endpoint_);
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
                              seconds_text(WHOLE_REPLY * endpoint_.timeout),
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
