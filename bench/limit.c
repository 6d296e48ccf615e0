// SPDX-License-Identifier: MIT
// limit PORT FILTER ADDRESSES REPLY_BYTES OUTPUT_BYTES: the least that any client must do for a
// device list. Connects, is admitted, sends the request with so many addresses, takes the reply
// without looking at it, writes so many bytes of whatever it has, says goodbye. It holds the whole
// reply, since a client may print nothing before the last byte of it has come.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <stdint.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

static char buffer[65536];

static size_t at_most_a_buffer(size_t length)
{
    return length < sizeof buffer ? length : sizeof buffer;
}

static void take(int controller, char *to, size_t length)
{
    while (length > 0) {
        const ssize_t got = recv(controller, to, length, 0);
        if (got <= 0)
            exit(1);
        to += got;
        length -= (size_t)got;
    }
}

static void print(size_t length)
{
    while (length > 0) {
        const ssize_t written = write(STDOUT_FILENO, buffer, at_most_a_buffer(length));
        if (written <= 0)
            exit(1);
        length -= (size_t)written;
    }
}

static size_t number(const char *text)
{
    return strtoul(text, NULL, 10);
}

int main(int argc, char **argv)
{
    if (argc != 6)
        return 2;
    const struct sockaddr_in address = {.sin_family = AF_INET,
                                        .sin_port = htons((uint16_t)number(argv[1])),
                                        .sin_addr.s_addr = htonl(INADDR_LOOPBACK)};
    const size_t filter = number(argv[2]), addresses = number(argv[3]);
    const int controller = socket(AF_INET, SOCK_STREAM, 0), on = 1;
    setsockopt(controller, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (connect(controller, (const struct sockaddr *)&address, sizeof address) != 0)
        return 1;
    take(controller, buffer, 4);

    const size_t length = 7 + 6 * addresses;
    if (length > sizeof buffer)
        return 2;
    const unsigned char head[7] = {1,
                                   0,
                                   0,
                                   0,
                                   (unsigned char)filter,
                                   (unsigned char)(addresses >> 8),
                                   (unsigned char)addresses};
    for (size_t i = 0; i < sizeof head; i++)
        buffer[i] = (char)head[i];
    if (send(controller, buffer, length, 0) != (ssize_t)length)
        return 1;
    const size_t reply = number(argv[4]);
    char *held = malloc(reply + 1);
    if (held == NULL)
        return 1;
    take(controller, held, reply);
    print(number(argv[5]));
    const char goodbye = 0;
    return send(controller, &goodbye, 1, 0) == 1 && close(controller) == 0 ? 0 : 1;
}
