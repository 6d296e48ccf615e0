// SPDX-License-Identifier: MIT
#include "controller.h"

#include "item_list.h"
#include "proto/result_code.h"
#include "record_writer.h"
#include "shell.h"
#include "upgrade.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <fstream>
#include <unistd.h>

Controller::Controller(const ControllerOptions &options)
    : options_(options), fleet_(make_fleet(options.fleet, time(nullptr)))
{
}

Controller::~Controller()
{
    unlink(memory_path_.c_str());
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

void Controller::serve(Connection &client)
{
    for (;;) {
        const auto code = static_cast<CommandCode>(client.number<uint8_t>());
        if (code == COMMAND_GOODBYE)
            return;
        answer(code, client);
    }
}

void Controller::answer(CommandCode code, Connection &client)
{
    struct Answer {
        CommandCode code;
        const char *name;
        void (Controller::*run)(Connection &);
    };
    static constexpr Answer ANSWERS[] = {
        {COMMAND_WTP_LIST, "list", &Controller::list_wtps},
        {COMMAND_UPGRADE, "upgrade", &Controller::upgrade},
        {COMMAND_ADD, "add", &Controller::add},
        {COMMAND_DELETE, "delete", &Controller::remove},
        {COMMAND_SET_CONFIG, "set configuration", &Controller::set_config},
        {COMMAND_RESET, "reset", &Controller::reset},
        {COMMAND_AC_INFO, "controller information", &Controller::ac_info},
        {COMMAND_AC_MEMORY, "controller memory", &Controller::ac_memory},
        {COMMAND_FIRMWARE_STATE, "firmware state", &Controller::firmware_state},
        {COMMAND_SCAN, "site survey", &Controller::scan},
        {COMMAND_BACKGROUND_SCAN, "background survey", &Controller::background_scan},
        {COMMAND_AUTO_CHANNEL, "automatic channel", &Controller::auto_channel},
        {COMMAND_AUTO_TX_POWER, "automatic power", &Controller::auto_tx_power},
        {COMMAND_KICK, "kick", &Controller::kick},
        {COMMAND_DEBUG, "debug", &Controller::debug},
        {COMMAND_NO_DISCOVERY, "no discovery", &Controller::no_discovery},
        {COMMAND_REDIRECT, "redirect", &Controller::redirect},
        {COMMAND_SHELL, "shell", &Controller::shell},
        {COMMAND_FIRMWARE_LIST, "firmware list", &Controller::firmware_list},
    };
    for (const Answer &known : ANSWERS)
        if (known.code == code) {
            log("%s", known.name);
            (this->*known.run)(client);
            return;
        }
    log("unknown command code %u", code);
    throw Disconnected();
}

// What keeps a device from acting: a code it was told to answer, or its state.
uint8_t Controller::check_acting(const Mac &mac, Device *device) const
{
    const auto told = options_.results.find(mac);
    if (told != options_.results.end())
        return told->second;
    if (device == nullptr)
        return RESULT_NOT_FOUND;
    if (device->record.managed == 0)
        return RESULT_NOT_MANAGED;
    if (device->record.state != WTP_ONLINE)
        return RESULT_NO_RESPONSE;
    return RESULT_SUCCESS;
}

// One result byte for each address: what keeps the device from acting, or what the action says.
template <class Action>
std::string Controller::for_each(const std::vector<Mac> &macs, Action action)
{
    std::string reply;
    for (const Mac &mac : macs) {
        Device *device = find_device(fleet_, mac);
        uint8_t code = check_acting(mac, device);
        if (code == RESULT_SUCCESS)
            code = action(*device);
        put(reply, code);
    }
    return reply;
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

void Controller::list_wtps(Connection &client)
{
    const auto filter = client.number<uint32_t>();
    const std::vector<Mac> macs = client.mac_list();
    const time_t now = time(nullptr);
    std::string reply;
    RecordWriter writer(reply, filter);
    for (const auto &device : fleet_) {
        WtpRecord &wtp = device->record;
        const uint32_t kind = wtp.managed != 0 ? WTP_FILTER_MANAGED : WTP_FILTER_UNMANAGED;
        if ((filter & kind) == 0 ||
            (wtp.state != WTP_ONLINE && (filter & WTP_FILTER_UNJOINED) == 0) ||
            (!macs.empty() && std::find(macs.begin(), macs.end(), wtp.mac) == macs.end()))
            continue;
        const bool online = wtp.state == WTP_ONLINE;
        wtp.uptime =
            online && now > device->started ? static_cast<uint32_t>(now - device->started) : 0;
        put(reply, uint8_t{0});
        writer.write(wtp);
        advance_upgrade(*device, now);
    }
    put(reply, uint8_t{1});
    client.send(reply);
}

void Controller::ac_info(Connection &client)
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
    std::string reply;
    put_text(reply, "1.0");
    for (const uint32_t number :
         {options_.max_wtps, managed, active, stations, upgrading, uint32_t{0}})
        put(reply, number);
    client.send(reply);
}

// The records of a program that allocates in a few places.
void Controller::ac_memory(Connection &client)
{
    memory_path_ = "/tmp/ac-sim." + std::to_string(getpid()) + ".mem";
    std::ofstream file(memory_path_, std::ios::trunc);
    const time_t now = time(nullptr);
    for (const auto &device : fleet_) {
        const WtpRecord &wtp = device->record;
        file << "wtp_list.c:118:" << sizeof wtp << ':' << device->started << '\n';
        if (wtp.wtp_cfg != nullptr)
            file << "wtp_cfg.c:64:" << sizeof *wtp.wtp_cfg << ':' << device->started << '\n';
        for (const RadioInfo &radio : wtp.radio)
            for (const WlanInfo &wlan : radio.wlan)
                for (uint32_t i = 0; i < wlan.sta.size(); i++)
                    file << "station.c:201:" << sizeof(StationInfo) << ':' << now << '\n';
    }
    file.close();
    std::string reply;
    put_text(reply, memory_path_);
    client.send(reply);
}

void Controller::add(Connection &client)
{
    const Mac mac = client.mac();
    const std::string bytes = client.bytes(client.number<uint16_t>());
    const ItemList items = parse_items(bytes);
    const auto told = options_.results.find(mac);
    Device *device = find_device(fleet_, mac);
    const auto managed = std::count_if(fleet_.begin(), fleet_.end(),
                                       [](const auto &one) { return one->record.managed != 0; });

    uint8_t code = RESULT_SUCCESS;
    if (told != options_.results.end())
        code = told->second;
    else if (!items.complete || !is_ip_setting(items))
        code = RESULT_INVALID_ARGUMENT;
    else if (device != nullptr && device->record.managed != 0)
        code = RESULT_ALREADY_MANAGED;
    else if (managed >= options_.max_wtps)
        code = RESULT_TOO_MANY_DEVICES;
    if (code == RESULT_SUCCESS) {
        if (device == nullptr) {
            fleet_.push_back(make_absent_device(mac));
            device = fleet_.back().get();
            device->started = time(nullptr);
        }
        device->record.managed = 1;
        if (!items.items.empty())
            set_address(device->record, items.items[0].value);
    }
    client.send(std::string(1, static_cast<char>(code)));
}

void Controller::remove(Connection &client)
{
    const Mac mac = client.mac();
    Device *device = find_device(fleet_, mac);
    uint8_t code = check_acting(mac, device);
    if (code == RESULT_NO_RESPONSE)
        code = RESULT_SUCCESS; // it need not be there to be let go
    if (code == RESULT_SUCCESS)
        device->record.managed = 0;
    client.send(std::string(1, static_cast<char>(code)));
}

static uint8_t configure(Device &device, uint8_t kind, const ItemList &items, std::string &message)
{
    WtpRecord &wtp = device.record;
    if (!items.complete)
        message = "the items are cut short";
    else if (kind != wtp.wtp_type)
        message = "this is no device of that kind";
    else
        message = apply_items(items, static_cast<DeviceKind>(kind), *wtp.wtp_cfg, device.memory);
    return message.empty() ? RESULT_SUCCESS : RESULT_BAD_CONFIGURATION;
}

void Controller::set_config(Connection &client)
{
    const std::string body = client.bytes(client.number<uint32_t>());
    const ConfigRequest request = parse_config_request(body);
    std::string reply;
    for (size_t i = 0; i < request.macs.size(); i++) {
        Device *device = find_device(fleet_, request.macs[i]);
        uint8_t code = check_acting(request.macs[i], device);
        std::string message;
        if (code == RESULT_SUCCESS && request.lists.empty())
            code = RESULT_INVALID_ARGUMENT;
        if (code == RESULT_SUCCESS)
            code =
                configure(*device, request.kind, request.lists[request.several ? i : 0], message);
        put(reply, code);
        put(reply, static_cast<uint8_t>(message.size()));
        reply += message;
        log("wait %d", request.wait);
    }
    client.send(reply);
}

void Controller::upgrade(Connection &client)
{
    client.number<uint16_t>();
    const auto count = client.number<uint16_t>();
    const auto period = client.number<uint32_t>();
    const auto type = client.number<uint32_t>();
    log("period %u, type %u", period, type);
    client.send(for_each(client.macs(count), [](Device &device) { return start_upgrade(device); }));
}

void Controller::firmware_list(Connection &client)
{
    client.number<uint16_t>();
    std::string one_step, two_step;
    std::string reply = for_each(client.mac_list(), [&](Device &device) -> uint8_t {
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
    client.send(reply);
}

void Controller::firmware_state(Connection &client)
{
    firmware_state_ = client.number<uint32_t>();
    log("firmware upgrading state is %u", firmware_state_);
}

void Controller::reset(Connection &client)
{
    client.number<uint16_t>();
    const bool factory = client.number<uint8_t>() != 0;
    client.number<uint8_t>();
    const auto wait = client.number<int32_t>();
    client.send(for_each(client.mac_list(), [=](Device &device) -> uint8_t {
        device.started = time(nullptr) + wait;
        if (factory)
            reset_configuration(device);
        return RESULT_SUCCESS;
    }));
}

void Controller::scan(Connection &client)
{
    client.number<uint16_t>();
    const auto band = client.number<uint8_t>();
    client.send(for_each(client.mac_list(), [=](Device &device) -> uint8_t {
        return band < device.record.radio.size() ? RESULT_SUCCESS : RESULT_NOT_SUPPORTED;
    }));
}

namespace {

struct Periodic {
    uint32_t band;
    bool enable;
    uint32_t period;
};

Periodic read_periodic(Connection &client)
{
    client.number<uint16_t>();
    const auto band = client.number<uint32_t>();
    const bool enable = client.number<uint8_t>() != 0;
    return {band, enable, client.number<uint32_t>()};
}

} // namespace

void Controller::background_scan(Connection &client)
{
    const Periodic asked = read_periodic(client);
    const uint32_t count = for_each_radio(asked.band, [](RadioInfo &) {});
    std::string reply;
    put(reply, count);
    reply.append(count, '\0');
    client.send(reply);
}

void Controller::auto_channel(Connection &client)
{
    const Periodic asked = read_periodic(client);
    int32_t channel = asked.band == 0 ? 1 : 36;
    if (asked.enable)
        for_each_radio(asked.band, [&](RadioInfo &radio) {
            radio.cur_cfg.channel = channel;
            channel += asked.band == 0 ? 5 : 4;
            if (channel > (asked.band == 0 ? 11 : 64))
                channel = asked.band == 0 ? 1 : 36;
        });
}

void Controller::auto_tx_power(Connection &client)
{
    const Periodic asked = read_periodic(client);
    if (asked.enable)
        for_each_radio(asked.band, [](RadioInfo &radio) {
            radio.cur_cfg.tx_power = radio.max_tx_power * 3 / 4;
            radio.cur_cfg.tx_power_percent = 75;
        });
}

static void drop_stations(ArenaTable<StationInfo> &stations, const std::vector<Mac> &clients)
{
    ArenaTable<StationInfo> rest = stations; // in the same room
    rest.clear();
    for (const StationInfo sta : stations)
        if (std::find(clients.begin(), clients.end(), sta.mac) == clients.end())
            rest.append() = sta;
    stations = rest;
}

void Controller::kick(Connection &client)
{
    client.number<uint16_t>();
    const auto band = client.number<uint8_t>();
    const auto wlan = client.number<uint8_t>(); // from 1, as the reports number them
    const std::vector<Mac> clients = client.mac_list();
    client.send(for_each(client.mac_list(), [&](Device &device) -> uint8_t {
        ArenaTable<RadioInfo> &radios = device.record.radio;
        if (band >= radios.size() || wlan == 0 || wlan > radios[band].wlan.size())
            return RESULT_NOT_SUPPORTED;
        drop_stations(radios[band].wlan[wlan - 1U].sta, clients);
        return RESULT_SUCCESS;
    }));
}

void Controller::debug(Connection &client)
{
    const bool enable = client.number<uint32_t>() != 0;
    const bool wtp = client.number<uint32_t>() != 0;
    const Mac mac = client.mac();
    if (!wtp)
        debug_ = enable;
    log("debug log of %s %s: %s", wtp ? "devices" : "the controller", mac_to_text(mac),
        enable ? "on" : "off");
}

void Controller::no_discovery(Connection &client)
{
    discovery_ = client.number<uint32_t>() != 0;
    log("discovery is %s", discovery_ ? "on" : "off");
}

void Controller::redirect(Connection &client)
{
    client.number<uint16_t>();
    const std::vector<Mac> macs = client.mac_list();
    const std::string address = client.bytes(client.number<uint8_t>());
    log("devices are sent to %s", address.c_str());
    client.send(for_each(macs, [](Device &device) -> uint8_t {
        device.record.state = WTP_OFFLINE;
        device.record.sub_state = 0;
        return RESULT_SUCCESS;
    }));
}

void Controller::shell(Connection &client)
{
    client.number<uint16_t>();
    const std::vector<Mac> macs = client.mac_list();
    const auto type = client.number<uint8_t>();
    client.number<uint32_t>();
    const std::string command = client.bytes(client.number<uint16_t>());
    std::string reply;
    for (const Mac &mac : macs) {
        Device *device = find_device(fleet_, mac);
        const uint8_t code = check_acting(mac, device);
        put(reply, code);
        if (code == RESULT_SUCCESS)
            put_text(reply, canned_output(*device, command, type));
    }
    client.send(reply);
}
