// SPDX-License-Identifier: MIT
#include "sim/controller.h"

#include "common/plain_text.h"
#include "sim/defaults.h"
#include "sim/request_reader.h"
#include "sim/shell.h"
#include "sim/upgrade.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <poll.h>
#include <unistd.h>

Controller::Controller(const ControllerOptions &options)
    : options_(options), fleet_(make_fleet(options.fleet, time(nullptr))),
      restarts_counted_(steady_time()),
      memory_path_("/tmp/ac-sim." + std::to_string(getpid()) + ".mem")
{
    for (const auto &device : fleet_)
        by_mac_[device->record.mac] = device.get();
    for (const auto &[mac, course] : options_.upgrades)
        if (Device *device = find(mac)) {
            device->course = course;
            if (course.kind == UpgradeCourse::timed)
                timed_.push_back(device);
        }
}

void Controller::log(const char *format, ...)
{
    if (!options_.verbose && !debug_)
        return;
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    print(text);
}

// Writes a line, unless that would have to wait for a reader: then it only counts, and the next
// line that is written tells the number. Both are less than PIPE_BUF, which a pipe takes whole.
void Controller::print(const std::string &text)
{
    std::string lines = "ac-sim: " + text + "\n";
    if (lost_lines_ > 0)
        lines.insert(0, "ac-sim: lost lines: " + std::to_string(lost_lines_) + "\n");
    pollfd out = {STDERR_FILENO, POLLOUT, 0};
    const bool written =
        poll(&out, 1, 0) == 1 &&
        write(STDERR_FILENO, lines.data(), lines.size()) == static_cast<ssize_t>(lines.size());
    lost_lines_ = written ? 0 : lost_lines_ + 1;
}

// Calls act(request, name) for an empty request of the kind that the code stands for.
template <class Act> static auto with_request(uint8_t code, Act act)
{
    switch (code) {
#define CASE(Request, name)                                                                        \
    case Request::CODE: {                                                                          \
        Request request = {};                                                                      \
        return act(request, name);                                                                 \
    }
        ALL_REQUESTS(CASE)
#undef CASE
    default:
        throw BadRequest("unknown command code " + std::to_string(code));
    }
}

std::optional<size_t> Controller::request_length(std::string_view bytes)
{
    if (bytes.empty())
        return std::nullopt;
    if (bytes[0] == GOODBYE)
        return 1;
    return with_request(static_cast<uint8_t>(bytes[0]),
                        [=](auto &request, const char *) { return read_request(bytes, request); });
}

void Controller::answer(std::string_view bytes, std::string &reply)
{
    with_request(static_cast<uint8_t>(bytes[0]), [&](auto &request, const char *name) {
        read_request(bytes, request);
        log("%s", name);
        catch_up();
        answer(request, reply);
    });
}

// Brings what happens by the clock to where it is by now.
void Controller::catch_up()
{
    for (Device *device : timed_)
        if (!device->away)
            follow_clock(*device, time(nullptr));
    const double now = steady_time();
    const auto is_due = [=](const Event &event) { return event.due <= now; };
    for (;;) {
        const auto next = std::find_if(events_.begin(), events_.end(), is_due);
        if (next == events_.end())
            break;
        const Event event = std::move(*next);
        events_.erase(next);
        if (event.items) {
            store(*event.device, *event.items);
        } else {
            event.device->away = false;
            set_state(event.device->record, WTP_ONLINE, time(nullptr));
        }
    }
    count_restarts(now);
}

// Now and then, the rules of a switch restart what their port feeds.
void Controller::count_restarts(double now)
{
    constexpr double PERIOD = 10;
    const auto restarts = static_cast<uint32_t>((now - restarts_counted_) / PERIOD);
    if (restarts == 0)
        return;
    restarts_counted_ += restarts * PERIOD;
    for (const auto &device : fleet_)
        for (PdLifeguard &rule : device->record.wtp_cfg->pd_lifeguard)
            if (device->record.state == WTP_ONLINE && rule.enable != 0)
                rule.reboot_count += restarts;
}

Device *Controller::find(const Mac &mac) const
{
    const auto found = by_mac_.find(mac);
    return found == by_mac_.end() ? nullptr : found->second;
}

// What keeps a device from acting: a code it was told to answer, or its state.
uint8_t Controller::check_acting(const Mac &mac, const Device *device) const
{
    const auto told = options_.results.find(mac);
    if (told != options_.results.end() && (told->second != RESULT_SUCCESS || device != nullptr))
        return told->second;
    if (device == nullptr)
        return RESULT_NOT_FOUND;
    if (device->record.managed == 0)
        return RESULT_NOT_MANAGED;
    if (device->record.state != WTP_ONLINE)
        return RESULT_NO_RESPONSE;
    return RESULT_SUCCESS;
}

void Controller::answer(const WtpListRequest &request, std::string &reply)
{
    const uint32_t filter = request.filter;
    std::vector<Mac> macs(request.wtps.begin(), request.wtps.end());
    std::sort(macs.begin(), macs.end());
    const time_t now = time(nullptr);
    RecordWriter writer(reply, filter);
    for (const auto &device : fleet_) {
        WtpRecord &wtp = device->record;
        const uint32_t kind = wtp.managed != 0 ? WTP_FILTER_MANAGED : WTP_FILTER_UNMANAGED;
        if ((filter & kind) == 0 ||
            (wtp.state != WTP_ONLINE && (filter & WTP_FILTER_UNJOINED) == 0) ||
            (!macs.empty() && !std::binary_search(macs.begin(), macs.end(), wtp.mac)))
            continue;
        const bool online = wtp.state == WTP_ONLINE;
        const double up = exact_time() - device->started;
        wtp.uptime = online && up > 0 ? static_cast<uint32_t>(up) : 0;
        put(reply, uint8_t{0});
        writer.write(wtp);
        advance_upgrade(*device, now);
    }
    put(reply, uint8_t{1});
    largest_list_ = std::max(largest_list_, reply.size());
}

void Controller::answer(const AcInfoRequest &, std::string &reply)
{
    uint32_t managed = 0, active = 0, stations = 0, upgrading = 0;
    for (const auto &device : fleet_) {
        const WtpRecord &wtp = device->record;
        managed += wtp.managed != 0;
        active += wtp.managed != 0 && wtp.state == WTP_ONLINE;
        upgrading += wtp.upg_img != 0;
        for (const RadioInfo &radio : wtp.radio)
            for (const WlanInfo &wlan : radio.wlan)
                stations += wlan.sta.size();
    }
    put_text(reply, "1.0");
    for (const uint32_t number :
         {options_.max_wtps, managed, active, stations, upgrading, uint32_t{0}})
        put(reply, number);
}

// The records of a program that allocates in a few places.
void Controller::answer(const AcMemoryRequest &, std::string &reply)
{
    std::string text;
    const auto record = [&](const char *place, size_t size, time_t when) {
        text += place + (":" + std::to_string(size)) + ":" + std::to_string(when) + "\n";
    };
    const time_t now = time(nullptr);
    for (const auto &device : fleet_) {
        const WtpRecord &wtp = device->record;
        record("wtp_list.c:118", sizeof wtp, static_cast<time_t>(device->started));
        record("wtp_cfg.c:64", sizeof *wtp.wtp_cfg, static_cast<time_t>(device->started));
        for (const RadioInfo &radio : wtp.radio)
            for (const WlanInfo &wlan : radio.wlan)
                for (uint32_t i = 0; i < wlan.sta.size(); i++)
                    record("station.c:201", sizeof(StationInfo), now);
    }
    memory_file_.reset();
    memory_file_.emplace(memory_path_.c_str());
    const bool written = memory_file_->created() && memory_file_->write(text.data(), text.size());
    if (!written)
        print("cannot write " + memory_path_ + ": " + strerror(errno));
    put_text(reply, written ? memory_path_ : "");
}

void Controller::answer(const UpgradeRequest &request, std::string &reply)
{
    log("period %u, type %u", request.period, request.type);
    for_each(request.wtps, reply, [](Device &device) { return start_upgrade(device); });
}

void Controller::answer(const FirmwareListRequest &request, std::string &reply)
{
    std::string one_step, two_step;
    for_each(request.wtps, reply, [&](Device &device) -> uint8_t {
        const unsigned steps = upgrade_steps(device);
        if (steps == 0)
            return RESULT_NO_IMAGE;
        put(steps == 1 ? one_step : two_step, device.record.mac);
        return RESULT_SUCCESS;
    });
    for (const std::string *list : {&one_step, &two_step}) {
        put(reply, static_cast<uint16_t>(list->size() / sizeof(Mac)));
        reply += *list;
    }
}

void Controller::answer(const FirmwareStateRequest &request, std::string &)
{
    log("firmware upgrading state is %u", request.state);
}

void Controller::answer(const ResetRequest &request, std::string &reply)
{
    for_each(request.wtps, reply, [&](Device &device) -> uint8_t {
        device.started = exact_time() + static_cast<int32_t>(request.wait);
        if (request.factory)
            reset_configuration(device);
        return RESULT_SUCCESS;
    });
}

void Controller::answer(const DebugRequest &request, std::string &)
{
    const bool enable = request.enable != 0, wtp = request.wtp != 0;
    if (!wtp)
        debug_ = enable;
    log("debug log of %s %s: %s", wtp ? "devices" : "the controller", mac_to_text(request.mac),
        enable ? "on" : "off");
}

void Controller::answer(const NoDiscoveryRequest &request, std::string &)
{
    log("discovery is %s", request.on != 0 ? "on" : "off");
}

void Controller::answer(const RedirectRequest &request, std::string &reply)
{
    log("devices are sent to %s", plain_text(request.address.bytes).c_str());
    for_each(request.wtps, reply, [](Device &device) -> uint8_t {
        set_state(device.record, WTP_OFFLINE, time(nullptr));
        device.record.sub_state = 0;
        return RESULT_SUCCESS;
    });
}

void Controller::answer(const ShellRequest &request, std::string &reply)
{
    const std::string command(request.command.bytes);
    for (const Mac &mac : request.wtps) {
        const Device *device = find(mac);
        const uint8_t code = check_acting(mac, device);
        put(reply, code);
        if (code == RESULT_SUCCESS)
            put_text(reply, canned_output(*device, command, request.type));
        if (reply.size() > held_max())
            throw BadRequest("output of all devices is too long");
    }
}
