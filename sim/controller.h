// SPDX-License-Identifier: MIT
// The simulated controller: its state, and an answer to every command.
#pragma once

#include "proto/requests.h"
#include "proto/result_code.h"
#include "sim/config_course.h"
#include "sim/fleet.h"
#include "sim/record_writer.h"
#include "util/temp_file.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct ControllerOptions {
    FleetSize fleet;
    uint32_t max_wtps = 0;
    std::map<Mac, uint8_t> results; // devices that answer every action with a code
    std::map<Mac, UpgradeCourse> upgrades;
    std::map<Mac, ConfigCourse> configs;
    bool verbose = false; // a line on standard error for each request
};

inline constexpr size_t HELD_MAX = size_t{256} << 20; // bytes

class Controller {
public:
    explicit Controller(const ControllerOptions &options);
    Controller(const Controller &) = delete;
    Controller &operator=(const Controller &) = delete;

    // The length of the request that begins with these bytes; none as long as they do not tell.
    // Throws BadRequest, as answer() may.
    static std::optional<size_t> request_length(std::string_view bytes);

    // Does what a whole request asks for, and appends the reply to it.
    void answer(std::string_view request, std::string &reply);

    // How many bytes of requests and replies all clients together may hold: two of the largest
    // device lists so far have room.
    size_t held_max() const { return std::max(HELD_MAX, 2 * largest_list_); }

    // Where the memory records are, after a request for them.
    const char *memory_path() const { return memory_path_.c_str(); }

    // A line on standard error, for those who asked for it. Never waits.
    void log(const char *format, ...) __attribute__((format(printf, 2, 3)));

private:
    // An answer to each of the requests.
#define ANSWER(Request, name) void answer(const Request &request, std::string &reply);
    ALL_REQUESTS(ANSWER)
#undef ANSWER

    // What happens to a device by the clock.
    struct Event {
        double due; // steady_time()
        Device *device;
        std::optional<std::string> items; // that are stored; none: it comes back
    };

    void print(const std::string &text);
    void catch_up();
    void count_restarts(double now);
    Device *find(const Mac &mac) const;
    uint8_t check_acting(const Mac &mac, const Device *device) const;
    const ConfigCourse &config_course(const Mac &mac) const;
    std::string store(Device &device, std::string_view list);
    ConfigAnswer configure(const Mac &mac, uint8_t kind, const std::string_view *list);
    bool loses_reply(Macs macs);
    template <class Action> void for_each(Macs macs, std::string &reply, Action action);
    template <class Action> uint32_t for_each_radio(uint32_t band, Action action);

    ControllerOptions options_;
    Fleet fleet_;
    std::map<Mac, Device *> by_mac_;
    std::vector<Device *> timed_; // those whose upgrades take their time
    std::vector<Event> events_;
    double restarts_counted_; // until when, by steady_time()
    bool debug_ = false;      // set by clients: log as if verbose
    size_t largest_list_ = 0; // bytes
    unsigned lost_lines_ = 0; // of the log, since the last one that was written
    const std::string memory_path_;
    std::optional<TempFile> memory_file_; // the records written last
};

// One result byte for each address: what keeps the device from acting, or what the action says.
template <class Action> void Controller::for_each(Macs macs, std::string &reply, Action action)
{
    for (const Mac &mac : macs) {
        Device *device = find(mac);
        uint8_t code = check_acting(mac, device);
        if (code == RESULT_SUCCESS)
            code = action(*device);
        put(reply, code);
    }
}

// Calls the action for the radio of a band of every access point that can act; returns how many.
template <class Action> uint32_t Controller::for_each_radio(uint32_t band, Action action)
{
    uint32_t count = 0;
    for (const auto &device : fleet_) {
        WtpRecord &wtp = device->record;
        if (check_acting(wtp.mac, device.get()) != RESULT_SUCCESS || band >= wtp.radio.size())
            continue;
        action(wtp.radio[band]);
        count++;
    }
    return count;
}
