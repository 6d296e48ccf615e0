// SPDX-License-Identifier: MIT
#include "proto/session.h"

#include "proto/requests.h"
#include "util/byte_order.h"
#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

// Without quick acknowledgements, which the kernel switches off again by itself, a reply that the
// controller writes in small pieces waits 40 ms for each of them. Failing to set either option
// costs time only.
static void set_option(int socket, int option)
{
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, option, &on, sizeof on);
}

static ssize_t receive_from_socket(ByteSource &source, void *to, size_t size)
{
    const int socket = static_cast<AcSession &>(source).socket;
    set_option(socket, TCP_QUICKACK);
    ssize_t got;
    do
        got = recv(socket, to, size, 0);
    while (got < 0 && errno == EINTR);
    return got;
}

int ac_admit(AcSession &session)
{
    const Messages &messages = session.messages;
    uint8_t word[4];
    const ssize_t got = recv_all(session, word, sizeof word);
    if (got < 0)
        return messages.report_errno(Cause::not_received,
                                     "ERROR: reading socket failed for reason");
    if (got < 4)
        return messages.report_silently(Cause::ended);
    switch (const auto answer = from_big_endian<int32_t>(word); answer) {
    case HANDSHAKE_ADMITTED:
        return 0;
    case HANDSHAKE_BUSY:
        return messages.report(Cause::busy, answer,
                               "ERROR: System is busy and cannot handle your request now, "
                               "please try again later.\n");
    default:
        return messages.report(
            Cause::refused, answer,
            "ERROR: Something Wrong Happened While Connecting To The AC Server.\n");
    }
}

void ac_attach(AcSession &session, int socket)
{
    session.socket = socket;
    set_option(socket, TCP_NODELAY);
    session.receive = receive_from_socket;
    session.buffer = session.in;
    session.buffer_size = sizeof session.in;
}

int ac_connect(AcSession &session, const char *address, int port)
{
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return session.messages.report(Cause::unreachable, errno, "ERROR: create socket failed.\n");
    ac_attach(session, fd);

    sockaddr_in ac = {};
    ac.sin_family = AF_INET;
    to_big_endian(&ac.sin_port, static_cast<uint16_t>(port));
    inet_pton(AF_INET, address, &ac.sin_addr);
    if (connect(session.socket, reinterpret_cast<const sockaddr *>(&ac), sizeof ac) != 0)
        return session.messages.report(Cause::unreachable, errno, "ERROR: AC is not running.\n");
    return ac_admit(session);
}

void ac_disconnect(AcSession &session)
{
    const uint8_t goodbye = GOODBYE;
    if (send_all(session, &goodbye, sizeof goodbye) < 0)
        session.messages.report_errno(Cause::not_sent, "ERROR: writing socket failed for reason");
    if (close(session.socket) != 0)
        session.messages.report_errno(Cause::other, "ERROR: ");
}

ssize_t send_all(AcSession &session, const void *bytes, size_t length)
{
    const auto *next = static_cast<const uint8_t *>(bytes);
    size_t missing = length;
    while (missing > 0) {
        const ssize_t sent = send(session.socket, next, missing, 0);
        if (sent > 0) {
            next += sent;
            missing -= static_cast<size_t>(sent);
        } else if (errno != EINTR) {
            return -1;
        }
    }
    return static_cast<ssize_t>(length);
}
