// SPDX-License-Identifier: MIT
#include "common/connection.h"

#include "util/byte_order.h"

#include <arpa/inet.h>
#include <cerrno>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

// Remembers how the last receive went, since the library's functions only say that one failed. They
// are told that the stream ends, so that the only message is that of fail().
struct Connection::Session : AcSession {
    ssize_t (*receive_plainly)(ByteSource &source, void *to, size_t room) = nullptr;
    bool ended = false;
    int error = 0;

    static ssize_t receive_noting(ByteSource &source, void *to, size_t room)
    {
        auto &self = static_cast<Session &>(source);
        const ssize_t got = self.receive_plainly(source, to, room);
        self.ended = got == 0;
        self.error = got < 0 ? errno : 0;
        return got < 0 ? 0 : got;
    }
};

bool take_address(const char *text, Place &place)
{
    in_addr address;
    place.address = text;
    return inet_pton(AF_INET, text, &address) == 1;
}

bool take_port(const char *text, Place &place)
{
    return take_number<uint16_t>(text, 1, UINT16_MAX, place.port);
}

bool take_timeout(const char *text, Place &place)
{
    return take_number<uint32_t>(text, 1, 86400, place.timeout);
}

static std::string name_of(const Place &place)
{
    return std::string("the controller at ") + place.address + ":" + std::to_string(place.port);
}

[[noreturn]] static void fail_silent(const Place &place)
{
    throw Failure(name_of(place) + " does not answer within " + std::to_string(place.timeout) +
                  " s");
}

// Goes on with a connect(2) that a signal interrupted. Returns 0 or the errno of its end.
static int finish_connecting(int fd, const Place &place)
{
    pollfd ready = {fd, POLLOUT, 0};
    int error = EINPROGRESS, count;
    socklen_t size = sizeof error;
    do
        count = poll(&ready, 1, static_cast<int>(place.timeout * 1000));
    while (count < 0 && errno == EINTR);
    if (count > 0)
        getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size);
    return error;
}

// A connected socket whose transfers wait for the time-out at most.
static int connect_to(const Place &place)
{
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        throw Failure(with_reason("cannot create a socket", errno));
    const timeval patience = {static_cast<time_t>(place.timeout), 0};
    setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience); // of connect(2) as well
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    sockaddr_in there = {};
    there.sin_family = AF_INET;
    there.sin_port = htons(place.port);
    inet_pton(AF_INET, place.address, &there.sin_addr);
    int error = 0;
    if (connect(fd, reinterpret_cast<const sockaddr *>(&there), sizeof there) != 0)
        error = errno == EINTR ? finish_connecting(fd, place) : errno;
    if (error == 0)
        return fd;
    close(fd);
    if (error == EINPROGRESS || error == EAGAIN)
        fail_silent(place);
    throw Failure(with_reason("cannot connect to " + name_of(place), error));
}

Connection::Connection(const Place &place) : session_(new Session), place_(place)
{
    ac_attach(*session_, connect_to(place));
    session_->receive_plainly = session_->receive;
    session_->receive = Session::receive_noting;
    session_->quiet = true;
    uint8_t word[4];
    const ssize_t got = recv_all(*session_, word, sizeof word);
    const auto answer = got == sizeof word ? from_big_endian<int32_t>(word) : 0;
    if (answer == HANDSHAKE_ADMITTED)
        return;
    close(session_->socket);
    if (got != sizeof word)
        fail();
    throw Failure(name_of(place) + (answer == HANDSHAKE_BUSY
                                        ? " is busy, try again later"
                                        : " refuses: answer " + std::to_string(answer)));
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
    if (session_->ended)
        throw Failure(name_of(place_) + " ended the connection");
    if (session_->error == EAGAIN)
        fail_silent(place_);
    if (session_->error != 0)
        throw Failure(with_reason("cannot receive from " + name_of(place_), session_->error));
    throw Failure("no complete reply from " + name_of(place_));
}
