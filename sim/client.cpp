// SPDX-License-Identifier: MIT
#include "sim/client.h"
#include "proto/session.h"

#include "sim/record_writer.h"
#include "sim/request_reader.h"

#include <algorithm>
#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

Client::Client(const Misbehaviour &misbehaviour, int32_t handshake) : misbehaviour_(misbehaviour)
{
    std::string word;
    put(word, handshake);
    queue(std::move(word));
    last_ = last_ || handshake != HANDSHAKE_ADMITTED;
}

Client::~Client()
{
    if (socket_ >= 0)
        close(socket_);
}

bool Client::accept(int listener)
{
    const int on = 1;
    socket_ = accept4(listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (socket_ < 0)
        return false;
    setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return true;
}

short Client::awaits() const
{
    if (!output_.empty())
        return POLLOUT;
    return last_ || request_ ? 0 : POLLIN;
}

bool Client::step(Controller &controller)
{
    if (!output_.empty())
        return send_piece();
    if (last_ || (!request_ && !receive_piece()))
        return false;
    return !request_ || answer(controller);
}

// Whether a transfer that came to nothing can be tried again later.
static bool may_try_again()
{
    return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
}

bool Client::send_piece()
{
    const size_t length = misbehaviour_.trickle ? 1 : output_.size() - sent_;
    const ssize_t sent = send(socket_, output_.data() + sent_, length, MSG_NOSIGNAL);
    if (sent <= 0)
        return sent < 0 && may_try_again();
    sent_ += static_cast<size_t>(sent);
    if (sent_ == output_.size()) {
        std::string().swap(output_);
        find_request();
    }
    return true;
}

bool Client::receive_piece()
{
    char piece[65536];
    const ssize_t count = recv(socket_, piece, sizeof piece, 0);
    if (count <= 0)
        return count < 0 && may_try_again();
    input_.append(piece, static_cast<size_t>(count));
    find_request();
    return true;
}

void Client::find_request()
{
    request_ = Controller::request_length(input_);
    if (request_ && *request_ > input_.size())
        request_.reset();
}

bool Client::answer(Controller &controller)
{
    if (input_[0] == GOODBYE)
        return false;
    std::string reply;
    controller.answer(std::string_view(input_).substr(0, *request_), reply);
    input_.erase(0, *request_);
    input_.shrink_to_fit();
    request_.reset();
    queue(std::move(reply));
    if (output_.empty())
        find_request();
    return true;
}

void Client::queue(std::string reply)
{
    if (misbehaviour_.cut) {
        last_ = reply.size() > *misbehaviour_.cut;
        reply.resize(std::min(reply.size(), *misbehaviour_.cut));
        reply.shrink_to_fit();
        *misbehaviour_.cut -= reply.size();
    }
    output_ = std::move(reply);
    sent_ = 0;
}
