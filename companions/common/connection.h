// SPDX-License-Identifier: MIT
// A session with the controller for the companion tools: like zov's own, but with limits of time
// and size.
#pragma once

#include "common/command_line.h"
#include "device/wtp_list.h"
#include "proto/session.h"

#include <memory>

// Where the controller is. The settings of each program derive from it.
struct Endpoint {
    const char *address = AC_ADDRESS;
    uint16_t port = AC_PORT;
    uint32_t timeout = 30; // seconds for connecting, and for silence
};

bool take_address(const char *text, Endpoint &endpoint);
bool take_port(const char *text, Endpoint &endpoint);
bool take_timeout(const char *text, Endpoint &endpoint);

// The rows for it, the last of each program's table.
// clang-format off
#define ENDPOINT_OPTIONS                                                                              \
    {{"acserver", "ADDRESS", "the controller's IPv4 address (127.0.0.1)"},                         \
     [](const char *text, auto &to) { return take_address(text, to); }},                           \
    {{"acport", "PORT", "the controller's TCP port (1235)"},                                       \
     [](const char *text, auto &to) { return take_port(text, to); }},                              \
    {{"timeout", "SEC", "how long to wait for a connection or a silent controller (30)"},          \
     [](const char *text, auto &to) { return take_timeout(text, to); }}
// clang-format on

// A session that is admitted from the start, and says goodbye at its end. It is for one request:
// its reply may be silent for the time-out, take ten times as long in all, and have 1 GiB. All
// members throw Failure, which has the cause, when the controller is not there, refuses, ends the
// connection or goes beyond these limits; and bad_alloc when memory is short.
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
