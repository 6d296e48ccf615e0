// SPDX-License-Identifier: MIT
#include "sim/server.h"

#include "sim/request_reader.h"

#include <cerrno>
#include <memory>
#include <new>
#include <poll.h>
#include <sys/socket.h>
#include <vector>

int start_listening(SimOptions &options)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(options.port);
    address.sin_addr = options.address;
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    socklen_t size = sizeof address;
    const int on = 1;
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (bind(listener, generic, size) != 0 || listen(listener, SOMAXCONN) != 0 ||
        getsockname(listener, generic, &size) != 0)
        return -1;
    options.port = ntohs(address.sin_port);
    return listener;
}

namespace {

class Server {
public:
    Server(int listener, int stop, const sigset_t &signals, const SimOptions &options,
           Controller &controller)
        : listener_(listener), stop_(stop), signals_(signals), options_(options),
          controller_(controller), watched_(2)
    {
    }

    void run()
    {
        while (wait()) {
            const bool connecting = watched_[1].revents != 0;
            for (size_t i = 0; i < clients_.size(); i++)
                if ((watched_[i + 2].revents != 0 || watched_[i + 2].events == 0) &&
                    !step(*clients_[i]))
                    clients_[i].reset();
            if (std::erase(clients_, nullptr) > 0)
                full_ = false;
            if (connecting)
                admit();
        }
    }

private:
    // Waits until somebody can take a step; false when it is time to end.
    bool wait()
    {
        const auto listening = static_cast<short>(full_ ? 0 : POLLIN);
        bool ready = false;
        held_ = 0;
        watched_.clear(); // there is room for everybody
        watched_.push_back({stop_, POLLIN, 0});
        watched_.push_back({listener_, listening, 0});
        for (const auto &client : clients_) {
            watched_.push_back({client->socket(), client->awaits(), 0});
            ready = ready || watched_.back().events == 0;
            held_ += client->held();
        }
        if (poll(watched_.data(), watched_.size(), ready ? 0 : -1) < 0)
            for (pollfd &one : watched_) // interrupted
                one.revents = 0;
        return watched_[0].revents == 0;
    }

    // What goes wrong with one client ends that client only.
    bool step(Client &client)
    {
        const size_t before = client.held();
        bool goes_on = false;
        sigprocmask(SIG_UNBLOCK, &signals_, nullptr);
        try {
            goes_on = client.step(controller_);
        } catch (const BadRequest &bad) {
            controller_.log("%s", bad.what());
        } catch (const std::bad_alloc &) {
            controller_.log("out of memory");
        }
        sigprocmask(SIG_BLOCK, &signals_, nullptr);
        held_ += client.held() - before;
        if (goes_on && client.held() > before && held_ > controller_.held_max()) {
            controller_.log("clients hold too many bytes");
            goes_on = false;
        }
        if (!goes_on)
            held_ -= client.held();
        return goes_on;
    }

    // Without memory or descriptors for one more client, the next waits until another leaves.
    void admit()
    {
        try {
            auto client = std::make_unique<Client>(options_.misbehaviour, options_.handshake);
            clients_.reserve(clients_.size() + 1);
            watched_.reserve(clients_.size() + 3);
            if (client->accept(listener_))
                clients_.push_back(std::move(client));
            else
                full_ = errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM;
        } catch (const std::bad_alloc &) {
            full_ = true;
        }
        full_ = full_ && !clients_.empty();
    }

    int listener_, stop_;
    const sigset_t &signals_;
    const SimOptions &options_;
    Controller &controller_;
    std::vector<std::unique_ptr<Client>> clients_;
    std::vector<pollfd> watched_; // the end, the listener, the clients
    size_t held_ = 0;             // bytes, by all clients
    bool full_ = false;
};

} // namespace

void serve_clients(int listener, int stop, const sigset_t &signals, const SimOptions &options,
                   Controller &controller)
{
    Server(listener, stop, signals, options, controller).run();
}
