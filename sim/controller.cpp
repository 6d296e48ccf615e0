// SPDX-License-Identifier: MIT
#include "sim/controller.h"

#include "proto/commands.h"
#include "sim/factory.h"
#include "sim/request.h"
#include "sim/shell.h"
#include "sim/upgrade.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <unistd.h>

Controller::Controller(const ControllerOptions &options)
    : options_(options), fleet_(make_fleet(options.fleet, time(nullptr))),
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
    va_list arguments;
    va_start(arguments, format);
    fputs("ac-sim: ", stderr);
    vfprintf(stderr, format, arguments);
    fputc('\n', stderr);
    va_end(arguments);
}

struct Controller::Command {
    const char *name;
    void (Controller::*answer)(Taker &in, std::string &reply);
    CommandCode code;
    Shape request;
};

const Controller::Command &Controller::command(uint8_t code)
{
    using enum Payload;
    using Self = Controller;
    static constexpr Command COMMANDS[] = {
        {"list", &Self::list_wtps, COMMAND_WTP_LIST, {untold, {{5, 2, 6}}}},
        {"upgrade", &Self::upgrade, COMMAND_UPGRADE, {told, {{3, 2, 6}, {8}}}},
        {"add", &Self::add, COMMAND_ADD, {untold, {{7, 2, 1}}}},
        {"delete", &Self::remove, COMMAND_DELETE, {untold, {{7}}}},
        {"set configuration", &Self::set_config, COMMAND_SET_CONFIG, {untold, {{1, 4, 1}}}},
        {"reset", &Self::reset, COMMAND_RESET, {told, {{9, 2, 6}}}},
        {"controller information", &Self::ac_info, COMMAND_AC_INFO, {untold, {{1}}}},
        {"controller memory", &Self::ac_memory, COMMAND_AC_MEMORY, {untold, {{1}}}},
        {"firmware state", &Self::firmware_state, COMMAND_FIRMWARE_STATE, {untold, {{5}}}},
        {"site survey", &Self::scan, COMMAND_SCAN, {told, {{4, 2, 6}}}},
        {"background survey", &Self::background_scan, COMMAND_BACKGROUND_SCAN, {told, {{12}}}},
        {"automatic channel", &Self::auto_channel, COMMAND_AUTO_CHANNEL, {told, {{12}}}},
        {"automatic power", &Self::auto_tx_power, COMMAND_AUTO_TX_POWER, {told, {{12}}}},
        {"kick", &Self::kick, COMMAND_KICK, {told, {{5, 2, 6}, {0, 2, 6}}}},
        {"debug", &Self::debug, COMMAND_DEBUG, {untold, {{15}}}},
        {"no discovery", &Self::no_discovery, COMMAND_NO_DISCOVERY, {untold, {{5}}}},
        {"redirect", &Self::redirect, COMMAND_REDIRECT, {told, {{3, 2, 6}, {0, 1, 1}}}},
        {"shell", &Self::shell, COMMAND_SHELL, {told_in_low_bits, {{3, 2, 6}, {5, 2, 1}}}},
        {"firmware list", &Self::firmware_list, COMMAND_FIRMWARE_LIST, {told, {{3, 2, 6}}}},
    };
    for (const Command &known : COMMANDS)
        if (known.code == code)
            return known;
    throw BadRequest("unknown command code " + std::to_string(code));
}

std::optional<size_t> Controller::request_length(std::string_view bytes)
{
    if (bytes.empty())
        return std::nullopt;
    if (bytes[0] == COMMAND_GOODBYE)
        return 1;
    return command(static_cast<uint8_t>(bytes[0])).request.length(bytes);
}

void Controller::answer(std::string_view request, std::string &reply)
{
    Taker in(request);
    const Command &asked = command(in.number<uint8_t>());
    log("%s", asked.name);
    for (Device *device : timed_)
        follow_clock(*device, time(nullptr));
    (this->*asked.answer)(in, reply);
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

void Controller::list_wtps(Taker &in, std::string &reply)
{
    const auto filter = in.number<uint32_t>();
    std::vector<Mac> macs = in.mac_list();
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
        wtp.uptime =
            online && now > device->started ? static_cast<uint32_t>(now - device->started) : 0;
        put(reply, uint8_t{0});
        writer.write(wtp);
        advance_upgrade(*device, now);
    }
    put(reply, uint8_t{1});
}

void Controller::ac_info(Taker &, std::string &reply)
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
void Controller::ac_memory(Taker &, std::string &reply)
{
    std::string text;
    const auto record = [&](const char *place, size_t size, time_t when) {
        text += place + (":" + std::to_string(size)) + ":" + std::to_string(when) + "\n";
    };
    const time_t now = time(nullptr);
    for (const auto &device : fleet_) {
        const WtpRecord &wtp = device->record;
        record("wtp_list.c:118", sizeof wtp, device->started);
        record("wtp_cfg.c:64", sizeof *wtp.wtp_cfg, device->started);
        for (const RadioInfo &radio : wtp.radio)
            for (const WlanInfo &wlan : radio.wlan)
                for (uint32_t i = 0; i < wlan.sta.size(); i++)
                    record("station.c:201", sizeof(StationInfo), now);
    }
    memory_file_.reset();
    memory_file_.emplace(memory_path_.c_str());
    const bool written = memory_file_->created() && memory_file_->write(text.data(), text.size());
    if (!written)
        fprintf(stderr, "ac-sim: cannot write %s: %s\n", memory_path_.c_str(), strerror(errno));
    put_text(reply, written ? memory_path_ : "");
}

void Controller::upgrade(Taker &in, std::string &reply)
{
    in.number<uint16_t>();
    const auto count = in.number<uint16_t>();
    const auto period = in.number<uint32_t>();
    const auto type = in.number<uint32_t>();
    log("period %u, type %u", period, type);
    for_each(in.macs(count), reply, [](Device &device) { return start_upgrade(device); });
}

void Controller::firmware_list(Taker &in, std::string &reply)
{
    in.number<uint16_t>();
    std::string one_step, two_step;
    for_each(in.mac_list(), reply, [&](Device &device) -> uint8_t {
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

void Controller::firmware_state(Taker &in, std::string &)
{
    log("firmware upgrading state is %u", in.number<uint32_t>());
}

void Controller::reset(Taker &in, std::string &reply)
{
    in.number<uint16_t>();
    const bool factory = in.number<uint8_t>() != 0;
    in.number<uint8_t>();
    const auto wait = in.number<int32_t>();
    for_each(in.mac_list(), reply, [=](Device &device) -> uint8_t {
        device.started = time(nullptr) + wait;
        if (factory)
            reset_configuration(device);
        return RESULT_SUCCESS;
    });
}

void Controller::debug(Taker &in, std::string &)
{
    const bool enable = in.number<uint32_t>() != 0;
    const bool wtp = in.number<uint32_t>() != 0;
    const Mac mac = in.mac();
    if (!wtp)
        debug_ = enable;
    log("debug log of %s %s: %s", wtp ? "devices" : "the controller", mac_to_text(mac),
        enable ? "on" : "off");
}

void Controller::no_discovery(Taker &in, std::string &)
{
    log("discovery is %s", in.number<uint32_t>() != 0 ? "on" : "off");
}

void Controller::redirect(Taker &in, std::string &reply)
{
    in.number<uint16_t>();
    const std::vector<Mac> macs = in.mac_list();
    const std::string address(in.bytes(in.number<uint8_t>()));
    log("devices are sent to %s", address.c_str());
    for_each(macs, reply, [](Device &device) -> uint8_t {
        device.record.state = WTP_OFFLINE;
        device.record.sub_state = 0;
        return RESULT_SUCCESS;
    });
}

void Controller::shell(Taker &in, std::string &reply)
{
    in.number<uint16_t>();
    const std::vector<Mac> macs = in.mac_list();
    const auto type = in.number<uint8_t>();
    in.number<uint32_t>();
    const std::string command(in.bytes(in.number<uint16_t>()));
    for (const Mac &mac : macs) {
        const Device *device = find(mac);
        const uint8_t code = check_acting(mac, device);
        put(reply, code);
        if (code == RESULT_SUCCESS)
            put_text(reply, canned_output(*device, command, type));
    }
}
