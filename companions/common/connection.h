// SPDX-License-Identifier: MIT
// A session with the controller for the companion tools: like zov's own, but with limits of time
// and size.
#pragma once

#include "common/command_line.h"
#include "device/wtp_list.h"
#include "proto/session.h"

#include <memory>

// Where the controller is. The settings of each program derive from it; the rows below have the
// initial values.
struct Endpoint {
    const char *address = nullptr;
    uint16_t port = 0;
    double timeout = 0; // seconds for connecting, and for silence
};

bool take_address(const char *text, Endpoint &endpoint);
bool take_port(const char *text, Endpoint &endpoint);
bool take_timeout(const char *text, Endpoint &endpoint);

// The last rows of each program's table.
// clang-format off
#define ENDPOINT_OPTIONS                                                                           \
    {{.name = "acserver", .argument = "ADDRESS", .help = "the controller's IPv4 address",          \
      .expected = "an IPv4 address", .initial = "127.0.0.1"},                                      \
     [](const char *text, auto &to) { return take_address(text, to); }},                           \
    {{.name = "acport", .argument = "PORT", .help = "the controller's TCP port",                   \
      .expected = "a number from 1 to 65535", .initial = "1235"},                                  \
     [](const char *text, auto &to) { return take_port(text, to); }},                              \
    {{.name = "timeout", .argument = "SEC",                                                        \
      .help = "how long to wait for a connection or a silent controller",                          \
      .expected = "seconds from 0.1 to 86400", .initial = "30"},                                   \
     [](const char *text, auto &to) { return take_timeout(text, to); }}
// clang-format on

// How messages call it.
std::string controller_name(const Endpoint &endpoint);

// A session that is admitted from the start, and says goodbye at its end. It is for one request:
// its reply may be silent for the time-out, take ten times as long in all, and have 1 GiB. All
// members throw Failure, which has the cause, when the controller is not there, refuses, ends the
// connection or goes beyond these limits; StopAtOnce, see stop.h; and bad_alloc when memory is
// short.
class Connection {
public:
    explicit Connection(const Endpoint &endpoint);
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    ~Connection();

    // The list of these devices (all if there is none), see fetch_wtp_list.
    void fetch(WtpList &list, uint32_t filter, const MacList &macs);

    // For requests of other kinds; fail() throws what kept one from its reply.
    AcSession &session();
    [[noreturn]] void fail() const;

private:
    struct Session;
    std::unique_ptr<Session> session_;
    Endpoint endpoint_;
};
