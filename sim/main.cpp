// SPDX-License-Identifier: MIT
// ac-sim: a simulated controller, for trying zov and for testing scripts that use it.
#include "connection.h"
#include "controller.h"
#include "options.h"

#include <arpa/inet.h>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <netinet/in.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// A descriptor that becomes readable when the simulator is asked to end.
int watch_for_end()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC);
}

// Listens on the asked address; the port is filled in when the system chose it. -1 with errno set.
int start_listening(SimOptions &options)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(options.port);
    address.sin_addr = options.address;
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    socklen_t size = sizeof address;
    const int on = 1;
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (bind(listener, generic, size) != 0 || listen(listener, SOMAXCONN) != 0 ||
        getsockname(listener, generic, &size) != 0)
        return -1;
    options.port = ntohs(address.sin_port);
    return listener;
}

void serve_client(int socket, int stop, const SimOptions &options, Controller &controller)
{
    try {
        Connection client(socket, stop, options.faults);
        std::string handshake(4, '\0');
        to_big_endian(handshake.data(), options.handshake);
        client.send(handshake);
        if (options.handshake == HANDSHAKE_ADMIT)
            controller.serve(client);
    } catch (const Disconnected &) {
        // the next client may fare better
    }
}

void serve_clients(int listener, int stop, const SimOptions &options)
{
    Controller controller(options.controller);
    for (;;) {
        pollfd ready[] = {{listener, POLLIN, 0}, {stop, POLLIN, 0}};
        if (poll(ready, 2, -1) < 0)
            continue;
        if (ready[1].revents != 0)
            return;
        const int socket = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket >= 0)
            serve_client(socket, stop, options, controller);
    }
}

} // namespace

int main(int argc, char **argv)
{
    SimOptions options;
    const int status = read_options(argc, argv, options);
    if (status >= 0)
        return status;
    const int stop = watch_for_end();
    const int listener = start_listening(options);
    if (listener < 0) {
        fprintf(stderr, "ac-sim: cannot listen: %s\n", strerror(errno));
        return 1;
    }
    char address[INET_ADDRSTRLEN];
    inet_ntop(AF_INET, &options.address, address, sizeof address);
    printf("ac-sim: listening on %s:%u\n", address, options.port);
    fflush(stdout);
    if (!options.pid_file.empty())
        std::ofstream(options.pid_file) << getpid() << '\n';
    serve_clients(listener, stop, options);
    if (!options.pid_file.empty())
        unlink(options.pid_file.c_str());
    return 0;
}
