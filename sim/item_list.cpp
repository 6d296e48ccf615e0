// SPDX-License-Identifier: MIT
#include "item_list.h"

#include "util/byte_order.h"

#include <cstring>

namespace {

// Takes fields off the front of some bytes; after the first that is not there all are zero.
class Taker {
public:
    explicit Taker(std::string_view bytes) : rest_(bytes) {}

    bool ok() const { return ok_; }
    bool empty() const { return rest_.empty(); }

    std::string_view bytes(size_t length)
    {
        ok_ = ok_ && length <= rest_.size();
        const std::string_view taken = rest_.substr(0, ok_ ? length : 0);
        rest_.remove_prefix(taken.size());
        return taken;
    }

    template <class Int> Int number()
    {
        const std::string_view wire = bytes(sizeof(Int));
        return ok_ ? from_big_endian<Int>(wire.data()) : Int{0};
    }

private:
    std::string_view rest_;
    bool ok_ = true;
};

Item take_item(Taker &in, uint16_t type)
{
    Item item;
    item.type = type;
    item.index = in.bytes(in.number<uint16_t>());
    item.value = in.bytes(in.number<uint16_t>());
    return item;
}

} // namespace

ItemList parse_items(std::string_view bytes)
{
    ItemList list;
    Taker in(bytes);
    while (!in.empty() && in.ok()) {
        const auto type = in.number<uint16_t>();
        list.items.push_back(take_item(in, type));
    }
    list.complete = in.ok();
    return list;
}

ConfigRequest parse_config_request(std::string_view body)
{
    ConfigRequest request;
    Taker in(body);
    for (auto count = in.number<uint16_t>(); count > 0 && in.ok(); count--) {
        Mac &mac = request.macs.emplace_back();
        const std::string_view wire = in.bytes(sizeof mac.byte);
        if (in.ok())
            memcpy(mac.byte, wire.data(), sizeof mac.byte);
    }
    request.kind = in.number<uint8_t>();
    request.wait = in.number<int32_t>();
    request.several = in.number<uint8_t>() != 0;
    const size_t lists = request.several ? request.macs.size() : 1;
    while (request.lists.size() < lists && in.ok()) {
        ItemList &list = request.lists.emplace_back();
        while (const auto type = in.number<uint16_t>())
            list.items.push_back(take_item(in, type));
    }
    if (!in.ok() || !in.empty())
        request.lists.clear();
    return request;
}

static std::string apply_all(const ItemList &list, DeviceKind kind, WtpCfg &cfg, Arena &memory)
{
    for (const Item &item : list.items) {
        std::string wrong = apply_item(item, kind, cfg, memory);
        if (!wrong.empty())
            return wrong;
    }
    return "";
}

std::string apply_items(const ItemList &list, DeviceKind kind, WtpCfg &cfg, Arena &memory)
{
    WtpCfg trial;
    Arena trial_memory;
    std::string wrong = apply_all(list, kind, trial, trial_memory);
    return wrong.empty() ? apply_all(list, kind, cfg, memory) : wrong;
}

bool is_ip_setting(const ItemList &list)
{
    enum : uint16_t { ITEM_IP_SETTING = 3 };
    return list.items.empty() ||
           (list.items.size() == 1 && list.items[0].type == ITEM_IP_SETTING &&
            list.items[0].index.empty() && list.items[0].value.size() == 5 * sizeof(Ipv4));
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
