// SPDX-License-Identifier: MIT
// One client of the simulated controller, and the ways in which its connection can go wrong.
#pragma once

#include "util/byte_order.h"
#include "util/mac.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

// The client is gone, the connection was cut on request, or the simulator is to end.
struct Disconnected : std::runtime_error {
    Disconnected() : std::runtime_error("disconnected") {}
};

// How replies are sent.
struct Faults {
    std::optional<size_t> cut; // the connection ends after so many bytes of replies
    bool trickle = false;      // one byte at a time
};

// Reads throw Disconnected when the bytes do not come.
class Connection {
public:
    // `stop` is a descriptor that becomes readable when the simulator is to end.
    Connection(int socket, int stop, const Faults &faults);
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    ~Connection();

    std::string bytes(size_t length);
    template <class Int> Int number() { return from_big_endian<Int>(bytes(sizeof(Int)).data()); }
    Mac mac();
    std::vector<Mac> macs(size_t count);
    std::vector<Mac> mac_list() { return macs(number<uint16_t>()); }

    void send(const std::string &reply);

private:
    void send_now(const char *from, size_t length);

    int socket_;
    int stop_;
    Faults faults_;
};
