// SPDX-License-Identifier: MIT
// The controller's answers about management and configuration.
#include "sim/controller.h"
#include "sim/request.h"
#include "sim/setting.h"

#include <algorithm>
#include <set>

namespace {

// The most items of a list that are looked at; the richest device has some 5000 settings.
constexpr size_t ITEMS_MAX = 8192;

struct ConfigRequest {
    std::vector<Mac> macs;
    uint8_t kind = 0;
    int32_t wait = 0;
    bool several = false;
    // One, or with `several` one for each device; none: the request is malformed.
    std::vector<std::string_view> lists;
};

Item take_item(Taker &in)
{
    Item item;
    item.type = in.number<uint16_t>();
    if (item.type == 0) // ends a list
        return item;
    item.index = in.bytes(in.number<uint16_t>());
    item.value = in.bytes(in.number<uint16_t>());
    return item;
}

// What follows the length of a set-configuration request. Throws BadRequest when its lists cannot
// be reached.
ConfigRequest take_config_request(Taker &in)
{
    ConfigRequest request;
    request.macs = in.mac_list();
    request.kind = in.number<uint8_t>();
    request.wait = in.number<int32_t>();
    request.several = in.number<uint8_t>() != 0;
    if (!in.ok())
        throw BadRequest("length of the request does not match it");
    const size_t lists = request.several ? request.macs.size() : 1;
    while (request.lists.size() < lists && in.ok()) {
        const std::string_view from = in.rest();
        while (take_item(in).type != 0)
            ;
        request.lists.push_back(from.substr(0, from.size() - in.rest().size()));
    }
    if (!in.ok() || !in.empty())
        request.lists.clear();
    return request;
}

// Applies a list's items to the device's configuration if every one of them can be. Returns what is
// wrong, or an empty text.
std::string apply_items(std::string_view list, Device &device)
{
    WtpRecord &wtp = device.record;
    Memory trial_memory;
    WtpCfg *trial = copy_configuration(*wtp.wtp_cfg, wtp.wtp_type, trial_memory);
    Taker in(list);
    for (size_t count = 0;; count++) {
        const Item item = take_item(in);
        if (item.type == 0)
            break;
        if (count == ITEMS_MAX)
            return "there are more than " + std::to_string(ITEMS_MAX) + " items";
        std::string wrong = apply_item(item, wtp, *trial, trial_memory);
        if (!wrong.empty())
            return wrong;
    }
    // Copied once more, it leaves behind what was only there for a while.
    auto memory = std::make_unique<Memory>();
    wtp.wtp_cfg = copy_configuration(*trial, wtp.wtp_type, *memory);
    device.cfg_memory = std::move(memory);
    return "";
}

// The items of an add request: none, or one with five addresses. False for anything else.
bool take_addresses(std::string_view items, std::string_view &addresses)
{
    if (items.empty())
        return true;
    Taker in(items);
    const Item item = take_item(in);
    addresses = item.value;
    return in.ok() && in.empty() && item.type == CONFIG_ITEM_ADDRESS_SETTINGS &&
           item.index.empty() && addresses.size() == 5 * sizeof(Ipv4);
}

void set_address(WtpRecord &wtp, std::string_view addresses)
{
    Taker in(addresses);
    WtpCfg &cfg = *wtp.wtp_cfg;
    for (Ipv4 *addr : {&cfg.ip, &cfg.mask, &cfg.gateway, &cfg.dns1, &cfg.dns2})
        memcpy(addr->octet, in.bytes(sizeof addr->octet).data(), sizeof addr->octet);
    if (cfg.ip.is_zero())
        return;
    wtp.ip = cfg.ip;
    wtp.cur_cfg = {cfg.ip, cfg.mask, cfg.gateway, cfg.dns1, cfg.dns2};
}

} // namespace

void Controller::add(Taker &in, std::string &reply)
{
    const Mac mac = in.mac();
    std::string_view addresses;
    const bool valid = take_addresses(in.bytes(in.number<uint16_t>()), addresses);
    const auto told = options_.results.find(mac);
    Device *device = find(mac);
    const auto managed = std::count_if(fleet_.begin(), fleet_.end(),
                                       [](const auto &one) { return one->record.managed != 0; });

    uint8_t code = RESULT_SUCCESS;
    if (told != options_.results.end())
        code = told->second;
    else if (!valid)
        code = RESULT_INVALID_ARGUMENT;
    else if (device != nullptr && device->record.managed != 0)
        code = RESULT_ALREADY_MANAGED;
    else if (managed >= options_.max_wtps || (device == nullptr && fleet_.size() >= FLEET_MAX))
        code = RESULT_TOO_MANY_DEVICES;
    if (code == RESULT_SUCCESS) {
        if (device == nullptr) {
            fleet_.reserve(fleet_.size() + 1);
            auto made = make_absent_device(mac);
            device = by_mac_[mac] = made.get();
            device->started = time(nullptr);
            fleet_.push_back(std::move(made));
        }
        device->record.managed = 1;
        if (valid && !addresses.empty())
            set_address(device->record, addresses);
    }
    put(reply, code);
}

void Controller::remove(Taker &in, std::string &reply)
{
    const Mac mac = in.mac();
    Device *device = find(mac);
    uint8_t code = check_acting(mac, device);
    if (code == RESULT_NO_RESPONSE)
        code = RESULT_SUCCESS; // it need not be there to be let go
    if (code == RESULT_SUCCESS)
        device->record.managed = 0;
    put(reply, code);
}

void Controller::set_config(Taker &in, std::string &reply)
{
    in.number<uint32_t>();
    const ConfigRequest request = take_config_request(in);
    std::set<Mac> seen;
    for (size_t i = 0; i < request.macs.size(); i++) {
        const Mac &mac = request.macs[i];
        Device *device = find(mac);
        uint8_t code = check_acting(mac, device);
        std::string message;
        if (code == RESULT_SUCCESS && (request.lists.empty() || !seen.insert(mac).second))
            code = RESULT_INVALID_ARGUMENT;
        if (code == RESULT_SUCCESS) {
            message = request.kind != device->record.wtp_type
                          ? "this is no device of that kind"
                          : apply_items(request.lists[request.several ? i : 0], *device);
            code = message.empty() ? RESULT_SUCCESS : RESULT_BAD_CONFIGURATION;
        }
        put(reply, code);
        put(reply, static_cast<uint8_t>(message.size()));
        reply += message;
        log("wait %d", request.wait);
    }
}
