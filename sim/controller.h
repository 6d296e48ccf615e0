// SPDX-License-Identifier: MIT
// The simulated controller: its state, and an answer to every command.
#pragma once

#include "connection.h"
#include "fleet.h"
#include "proto/commands.h"
#include "setting.h"

#include <map>
#include <string>

struct ControllerOptions {
    FleetSize fleet;
    uint32_t max_wtps = 2048;
    std::map<Mac, uint8_t> results; // devices that answer every action with a code
    bool verbose = false;           // a line on standard error for each request
};

class Controller {
public:
    explicit Controller(const ControllerOptions &options);
    Controller(const Controller &) = delete;
    Controller &operator=(const Controller &) = delete;
    ~Controller();

    // Serves an admitted client until it says goodbye; throws Disconnected when it does not.
    void serve(Connection &client);

private:
    void answer(CommandCode code, Connection &client);

    void list_wtps(Connection &client);
    void upgrade(Connection &client);
    void add(Connection &client);
    void remove(Connection &client);
    void set_config(Connection &client);
    void reset(Connection &client);
    void ac_info(Connection &client);
    void ac_memory(Connection &client);
    void firmware_state(Connection &client);
    void scan(Connection &client);
    void background_scan(Connection &client);
    void auto_channel(Connection &client);
    void auto_tx_power(Connection &client);
    void kick(Connection &client);
    void debug(Connection &client);
    void no_discovery(Connection &client);
    void redirect(Connection &client);
    void shell(Connection &client);
    void firmware_list(Connection &client);

    template <class Action> std::string for_each(const std::vector<Mac> &macs, Action action);
    template <class Action> uint32_t for_each_radio(uint32_t band, Action action);
    uint8_t check_acting(const Mac &mac, Device *device) const;
    void log(const char *format, ...) __attribute__((format(printf, 2, 3)));

    ControllerOptions options_;
    Fleet fleet_;
    bool debug_ = false;    // set by clients: log as if verbose
    bool discovery_ = true; // cleared by clients
    uint32_t firmware_state_ = 0;
    std::string memory_path_; // the record file written last
};
