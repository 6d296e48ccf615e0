// SPDX-License-Identifier: MIT
// player REPLY_FILE: a controller that prints its port and gives every request the same reply, to
// one client after the other, until it is killed.
#include <arpa/inet.h>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

static bool receive(int client, std::string &bytes, size_t length)
{
    const size_t before = bytes.size();
    bytes.resize(before + length);
    return length == 0 ||
           recv(client, bytes.data() + before, length, MSG_WAITALL) == static_cast<ssize_t>(length);
}

static size_t number(const std::string &bytes, size_t at, size_t width)
{
    size_t value = 0;
    for (size_t i = at; i < at + width; i++)
        value = value << 8 | static_cast<unsigned char>(bytes[i]);
    return value;
}

// Reads one request of a device list (1), of a configuration (5) or of the memory record (8).
static bool receive_request(int client)
{
    std::string request;
    if (!receive(client, request, 1))
        return false;
    switch (request[0]) {
    case 1:
        return receive(client, request, 6) && receive(client, request, 6 * number(request, 5, 2));
    case 5:
        return receive(client, request, 4) && receive(client, request, number(request, 1, 4));
    default:
        return request[0] == 8;
    }
}

static void serve(int client, const std::string &reply)
{
    const int on = 1;
    setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    send(client, "\0\0\0\1", 4, 0);
    if (!receive_request(client))
        return;
    size_t at = 0;
    while (at < reply.size()) {
        const ssize_t sent = send(client, reply.data() + at, reply.size() - at, 0);
        if (sent <= 0)
            return;
        at += static_cast<size_t>(sent);
    }
    char rest[16];
    while (recv(client, rest, sizeof rest, 0) > 0)
        ;
}

int main(int argc, char **argv)
{
    if (argc != 2)
        return 2;
    std::ifstream file(argv[1], std::ios::binary);
    const std::string reply{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};

    signal(SIGPIPE, SIG_IGN);
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    if (bind(listener, generic, size) != 0 || listen(listener, 16) != 0 ||
        getsockname(listener, generic, &size) != 0)
        return 1;
    printf("%d\n", ntohs(address.sin_port));
    fflush(stdout);
    for (;;) {
        const int client = accept(listener, nullptr, nullptr);
        if (client < 0)
            return 1;
        serve(client, reply);
        close(client);
    }
}
