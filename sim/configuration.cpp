// SPDX-License-Identifier: MIT
// The controller's answers about management and configuration.
#include "sim/controller.h"
#include "sim/port_order.h"
#include "sim/request_reader.h"
#include "sim/setting.h"

#include <algorithm>
#include <set>
#include <utility>

namespace {

// The most items of a list that are looked at; the richest device has some 5000 settings.
constexpr size_t ITEMS_MAX = 8192;

Item read_item(RequestReader &in)
{
    Item item;
    Counted<uint16_t> index, value;
    item.type = in.number<uint16_t>();
    if (item.type == 0) // ends a list
        return item;
    in(index, value);
    item.index = index.bytes;
    item.value = value.bytes;
    return item;
}

// The lists of a request: one, or with `several` one for each device; none when they are malformed.
std::vector<std::string_view> split_lists(const SetConfigRequest &request)
{
    std::vector<std::string_view> lists;
    RequestReader in(request.lists.bytes);
    const size_t count = request.several ? request.wtps.size() : 1;
    while (lists.size() < count && in.ok()) {
        const std::string_view from = in.rest();
        while (read_item(in).type != 0)
            ;
        lists.push_back(from.substr(0, from.size() - in.rest().size()));
    }
    if (!in.ok() || !in.rest().empty())
        lists.clear();
    return lists;
}

// The items of a list, at most ITEMS_MAX and one.
std::vector<Item> read_items(std::string_view list)
{
    std::vector<Item> items;
    RequestReader in(list);
    for (Item item = read_item(in); item.type != 0 && items.size() <= ITEMS_MAX;
         item = read_item(in))
        items.push_back(item);
    return items;
}

// Applies a list's items to a configuration of the device. Returns what is wrong, or an empty text.
std::string apply_items(std::string_view list, const WtpRecord &wtp, WtpCfg &cfg, Arena &memory)
{
    const std::vector<Item> items = read_items(list);
    if (items.size() > ITEMS_MAX)
        return "there are more than " + std::to_string(ITEMS_MAX) + " items";
    std::optional<PortOrder> order;
    if (wtp.wtp_type == DEVICE_SWITCH)
        order.emplace(items, cfg, memory);
    for (const Item &item : items) {
        std::string wrong = apply_item(item, wtp, cfg, memory);
        if (!wrong.empty())
            return wrong;
    }
    if (order)
        order->restore(cfg);
    return "";
}

enum class Storing : uint8_t { checked, done };

// Stores a list's items and the course's alterations if every item can be applied; or only checks
// that. Returns what is wrong, or an empty text.
std::string store_items(std::string_view list, const ConfigCourse &course, Device &device,
                        Storing storing)
{
    WtpRecord &wtp = device.record;
    Arena trial_memory;
    WtpCfg *trial = copy_configuration(*wtp.wtp_cfg, wtp.wtp_type, trial_memory);
    std::string wrong = apply_items(list, wtp, *trial, trial_memory);
    if (!wrong.empty() || storing == Storing::checked)
        return wrong;
    for (const Alteration &alteration : course.alterations)
        alter_setting(alteration, wtp, *trial, trial_memory);
    // Copied once more, it leaves behind what was only there for a while.
    auto memory = std::make_unique<Arena>();
    wtp.wtp_cfg = copy_configuration(*trial, wtp.wtp_type, *memory);
    device.cfg_memory = std::move(memory);
    return "";
}

// The items of an add request: none, or one with five addresses. False for anything else.
bool take_addresses(std::string_view items, std::string_view &addresses)
{
    if (items.empty())
        return true;
    RequestReader in(items);
    const Item item = read_item(in);
    addresses = item.value;
    return in.ok() && in.rest().empty() && item.type == CONFIG_ITEM_ADDRESS_SETTINGS &&
           item.index.empty() && addresses.size() == 5 * sizeof(Ipv4);
}

void set_address(WtpRecord &wtp, std::string_view addresses)
{
    WtpCfg &cfg = *wtp.wtp_cfg;
    for (Ipv4 *addr : {&cfg.ip, &cfg.mask, &cfg.gateway, &cfg.dns1, &cfg.dns2}) {
        memcpy(addr->octet, addresses.data(), sizeof addr->octet);
        addresses.remove_prefix(sizeof addr->octet);
    }
    if (cfg.ip.is_zero())
        return;
    wtp.ip = cfg.ip;
    wtp.cur_cfg = {cfg.ip, cfg.mask, cfg.gateway, cfg.dns1, cfg.dns2};
}

} // namespace

void Controller::answer(const AddRequest &request, std::string &reply)
{
    const Mac &mac = request.wtp;
    std::string_view addresses;
    const bool valid = take_addresses(request.items.bytes, addresses);
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
    else if (static_cast<size_t>(managed) >= options_.max_wtps ||
             (device == nullptr && fleet_.size() >= FLEET_MAX))
        code = RESULT_TOO_MANY_DEVICES;
    if (code == RESULT_SUCCESS) {
        if (device == nullptr) {
            fleet_.reserve(fleet_.size() + 1);
            auto made = make_absent_device(mac);
            device = by_mac_[mac] = made.get();
            device->started = exact_time();
            fleet_.push_back(std::move(made));
        }
        device->record.managed = 1;
        if (valid && !addresses.empty())
            set_address(device->record, addresses);
    }
    put(reply, code);
}

void Controller::answer(const DeleteRequest &request, std::string &reply)
{
    Device *device = find(request.wtp);
    uint8_t code = check_acting(request.wtp, device);
    if (code == RESULT_NO_RESPONSE)
        code = RESULT_SUCCESS; // it need not be there to be let go
    if (code == RESULT_SUCCESS)
        device->record.managed = 0;
    put(reply, code);
}

const ConfigCourse &Controller::config_course(const Mac &mac) const
{
    static const ConfigCourse USUAL;
    const auto found = options_.configs.find(mac);
    return found == options_.configs.end() ? USUAL : found->second;
}

// Stores a list's items, after which the device may be away for a while. Returns what is wrong, or
// an empty text.
std::string Controller::store(Device &device, std::string_view list)
{
    const ConfigCourse &course = config_course(device.record.mac);
    std::string wrong = store_items(list, course, device, Storing::done);
    if (wrong.empty() && course.outage && device.record.state == WTP_ONLINE) {
        events_.push_back({steady_time() + *course.outage, &device, std::nullopt});
        device.away = true;
        set_state(device.record, WTP_OFFLINE, time(nullptr));
    }
    return wrong;
}

// The answer about one device; the list is null if the request has no valid one for it.
ConfigAnswer Controller::configure(const Mac &mac, uint8_t kind, const std::string_view *list)
{
    const ConfigCourse &course = config_course(mac);
    if (course.refusal)
        return *course.refusal;
    Device *device = find(mac);
    const uint8_t code = check_acting(mac, device);
    if (code != RESULT_SUCCESS)
        return {code, ""};
    if (list == nullptr)
        return {RESULT_INVALID_ARGUMENT, ""};
    if (kind != device->record.wtp_type)
        return {RESULT_BAD_CONFIGURATION, "this is no device of that kind"};
    std::string wrong =
        course.late ? store_items(*list, course, *device, Storing::checked) : store(*device, *list);
    if (wrong.empty() && course.late)
        events_.push_back({steady_time() + *course.late, device, std::string(*list)});
    return {wrong.empty() ? RESULT_SUCCESS : RESULT_BAD_CONFIGURATION, std::move(wrong)};
}

// Whether the reply about these devices gets lost, which it does once for each.
bool Controller::loses_reply(Macs macs)
{
    bool lost = false;
    for (const Mac &mac : macs)
        if (const auto course = options_.configs.find(mac); course != options_.configs.end())
            lost |= std::exchange(course->second.loses_reply, false);
    return lost;
}

void Controller::answer(const SetConfigRequest &request, std::string &reply)
{
    const std::vector<std::string_view> lists = split_lists(request);
    std::set<Mac> seen;
    for (size_t i = 0; i < request.wtps.size(); i++) {
        const Mac &mac = request.wtps[i];
        const bool valid = seen.insert(mac).second && !lists.empty();
        const ConfigAnswer answer =
            configure(mac, request.kind, valid ? &lists[request.several ? i : 0] : nullptr);
        put(reply, answer.code);
        put(reply, static_cast<uint8_t>(answer.message.size()));
        reply += answer.message;
        log("wait %d", static_cast<int32_t>(request.wait));
    }
    if (loses_reply(request.wtps))
        throw BadRequest("the reply is lost");
}
