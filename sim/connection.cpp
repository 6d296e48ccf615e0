// SPDX-License-Identifier: MIT
#include "connection.h"

#include <algorithm>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

Connection::Connection(int socket, int stop, const Faults &faults)
    : socket_(socket), stop_(stop), faults_(faults)
{
    const int on = 1;
    setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

Connection::~Connection()
{
    close(socket_);
}

std::string Connection::bytes(size_t length)
{
    std::string bytes(length, '\0');
    for (size_t got = 0; got < length;) {
        pollfd ready[] = {{socket_, POLLIN, 0}, {stop_, POLLIN, 0}};
        if (poll(ready, 2, -1) < 0)
            continue;
        const ssize_t count =
            ready[1].revents != 0 ? 0 : recv(socket_, bytes.data() + got, length - got, 0);
        if (count <= 0)
            throw Disconnected();
        got += static_cast<size_t>(count);
    }
    return bytes;
}

Mac Connection::mac()
{
    Mac mac;
    memcpy(mac.byte, bytes(sizeof mac.byte).data(), sizeof mac.byte);
    return mac;
}

std::vector<Mac> Connection::macs(size_t count)
{
    std::vector<Mac> macs;
    while (macs.size() < count)
        macs.push_back(mac());
    return macs;
}

void Connection::send_now(const char *from, size_t length)
{
    while (length > 0) {
        const ssize_t sent = ::send(socket_, from, length, MSG_NOSIGNAL);
        if (sent <= 0)
            throw Disconnected();
        from += sent;
        length -= static_cast<size_t>(sent);
    }
}

void Connection::send(const std::string &reply)
{
    const size_t length = std::min(reply.size(), faults_.cut.value_or(reply.size()));
    const size_t piece = faults_.trickle ? 1 : std::max<size_t>(length, 1);
    for (size_t at = 0; at < length; at += piece)
        send_now(reply.data() + at, piece);
    if (faults_.cut) {
        *faults_.cut -= length;
        if (length < reply.size())
            throw Disconnected();
    }
}
