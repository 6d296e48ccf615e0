// SPDX-License-Identifier: MIT
// One client of the simulated controller, and the ways in which its connection can go wrong.
#pragma once

#include "sim/controller.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

// How replies are sent.
struct Misbehaviour {
    std::optional<size_t> cut; // the connection ends after so many bytes of replies
    bool trickle = false;      // one byte at a time
};

// What came and is no whole request yet, and the reply that has not left yet; while there is one,
// nothing is read. Never waits.
class Client {
public:
    // Its first reply is the handshake word; any but HANDSHAKE_ADMITTED is its last.
    Client(const Misbehaviour &misbehaviour, int32_t handshake);
    Client(const Client &) = delete;
    Client &operator=(const Client &) = delete;
    ~Client();

    // Takes the next connection; false with errno set.
    bool accept(int listener);

    int socket() const { return socket_; }
    short awaits() const; // poll events, or 0: there is something to do already
    size_t held() const { return input_.size() + output_.size(); } // bytes of memory

    // Sends a piece of the reply; or receives a piece of a request and answers it when it is whole.
    // False: the connection is to end, as when it throws BadRequest or bad_alloc.
    bool step(Controller &controller);

private:
    bool send_piece();
    bool receive_piece();
    void find_request();
    bool answer(Controller &controller);
    void queue(std::string reply);

    int socket_ = -1;
    Misbehaviour misbehaviour_;
    std::string input_;
    std::optional<size_t> request_; // length of the whole request that the input begins with
    std::string output_;
    size_t sent_ = 0;   // bytes of the output
    bool last_ = false; // the connection ends behind the output
};
