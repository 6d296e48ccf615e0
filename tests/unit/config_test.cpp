// SPDX-License-Identifier: MIT
// Configuration: the item buffer, the key tables, and files turned into items.
#include "config/config_file.h"
#include "config/config_keys.h"
#include "config/tlv_buffer.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>

static std::string hex(const void *bytes, size_t length)
{
    std::string text;
    for (size_t i = 0; i < length; i++) {
        char digits[3];
        snprintf(digits, sizeof digits, "%02x", static_cast<const uint8_t *>(bytes)[i]);
        text += digits;
    }
    return text;
}

// "type:index:value" for each item.
static std::string show(const TlvBuffer &buffer)
{
    std::string text;
    const uint8_t *at = buffer.wire.data(), *end = at + buffer.wire_size();
    const auto number = [&] {
        at += 2;
        return static_cast<size_t>(at[-2] << 8 | at[-1]);
    };
    const auto bytes = [&] {
        const size_t length = number();
        at += length;
        return hex(at - length, length);
    };
    while (at < end) {
        text += std::to_string(number()) + ":";
        text += bytes() + ":";
        text += bytes() + " ";
    }
    EXPECT_EQ(at, end);
    return text;
}

TEST(TlvBuffer, Items)
{
    uint8_t index[] = {1, 2};
    TlvBuffer buffer;
    tlv_free(buffer);
    EXPECT_EQ(tlv_append(buffer, 70000, 0, nullptr, 0, nullptr), 0);
    EXPECT_EQ(tlv_append_u32(buffer, 4, 2, index, 0x01020304), 0);
    EXPECT_EQ(buffer.wire_size(), 6u + 12);
    EXPECT_EQ(tlv_append_u16(buffer, 5, 1, index, static_cast<uint32_t>(-60)), 0);
    EXPECT_EQ(tlv_append_string(buffer, 6, 0, nullptr, "AP1"), 0);
    EXPECT_EQ(tlv_append_string(buffer, 7, 1, index, ""), 0);
    index[0] = index[1] = 0xEE; // the buffer has its own copies
    EXPECT_EQ(show(buffer), "4464:: 4:0102:01020304 5:01:ffc4 6::415031 7:01: ");
    EXPECT_EQ(buffer.wire_size(), 18u + 9 + 9 + 7);
    tlv_free(buffer);
    EXPECT_EQ(buffer.wire_size(), 0u);
}

TEST(ConfigKeys, Invariants)
{
    for (const DeviceKind kind : {DEVICE_SWITCH, DEVICE_ACCESS_POINT}) {
        std::set<int> ids = {4, 17, 93}; // those of arrays are in no row
        if (kind == DEVICE_SWITCH)
            ids = {8, 13, 24, 38};
        std::set<std::string> paths;
        const ConfigKey *keys = config_keys(kind);
        for (const ConfigKey *key = keys; !key->path.empty(); key++) {
            const bool number = key->form == FORM_U32 || key->form == FORM_U16;
            EXPECT_TRUE(ids.insert(key->id).second && paths.emplace(key->path).second) << key->id;
            EXPECT_EQ(key->kind(), number ? json_integer : json_string) << key->id;
            EXPECT_TRUE(key->min <= key->max || (!number && key->max == -1)) << key->id;
            EXPECT_EQ(config_key_find(keys, std::string(key->path)), key);
        }
        EXPECT_EQ(paths.size(), kind == DEVICE_SWITCH ? 41u : 162u);
        for (const char *path : {"", "wtp_cfg", "wtp_cfg.nam", "wtp_cfg.name2", "wtp_cfg.Name"})
            EXPECT_EQ(config_key_find(keys, path), nullptr) << path;
    }
}

// What a file's members below wtp_cfg become for an access point: items, or the message.
static std::string load(const std::string &members)
{
    const std::string json = "{\"wtp_cfg\":{" + members + "}}";
    const std::unique_ptr<json_value, void (*)(json_value *)> root(
        json_parse(json.c_str(), json.size()), json_value_free);
    if (root == nullptr)
        return "no JSON";
    TlvBuffer items;
    testing::internal::CaptureStderr();
    const int status = config_tree_load(*root, DEVICE_ACCESS_POINT, items);
    const std::string message = testing::internal::GetCapturedStderr();
    return status == 0 ? show(items) + message : message;
}

TEST(ConfigTree, ItemsAndRefusals)
{
    const std::string invalid = "ERROR: Invalid config value ";
    const std::string cases[][2] = {
        // An array's own item ends with the position that was visited last at its depth.
        {R"("radio":[{"op_mode":1},{"op_mode":2}],"lan_port":[{"en":1}])",
         "4:00:00000002 5:00:00000001 5:01:00000002 93:01:00000001 94:00:00000001 "},
        {R"("x":{"a":1,"b":2,"c":3},"name":"b","y":[],"radio":[])", "1::62 4:02:00000000 "},
        {R"("radio":[{"wlan":[{"ssid":"x"},{"vlan":5}]},{"wlan":[]}])",
         "4:00:00000002 17:0000:00000002 19:0000:78 23:0001:00000005 17:0101:00000000 "},
        {R"("radio":[{"data_rate":"6M.5"},{"data_rate":"-1M"},{"data_rate":"999999M"}])",
         "4:00:00000003 45:00:00001964 45:01:fffffc18 45:02:3b9ac618 "},
        {R"("radio":[{"data_rate":"mcs7"}])",
         invalid + "'mcs7' for 'wtp_cfg.radio[].data_rate'.\n"},
        // A member named like a list's element is in no list; a list whose last element is no text
        // makes no item.
        {R"("ac_list[]":"x")", invalid + "'x' for 'wtp_cfg.ac_list[]'.\n"},
        {R"("ac_list":["a",{"x":1}],"ac_list[]":"x")", invalid + "'x' for 'wtp_cfg.ac_list[]'.\n"},
        {R"("radio":[{"wlan":[{"acl":{"mac":["2:0:0:0:0:1",{"x":1}],"mac[]":"2:0:0:0:0:2"}}]}])",
         "4:00:00000001 17:0000:00000001 "},
        {R"("radio":[{"wlan":[{"acl":{"mac":[{"x":1}]}},{"acl":{"mac[]":"2:0:0:0:0:1"}}]}])",
         invalid + "'2:0:0:0:0:1' for 'wtp_cfg.radio[].wlan[].acl.mac[]'.\n"},
    };
    for (const auto &[members, expected] : cases)
        EXPECT_EQ(load(members), expected) << members;
}

// An array of `count` texts that are hexadecimal numbers behind a prefix.
static std::string array(const std::string &member, const std::string &prefix, unsigned count)
{
    std::string text = "\"" + member + "\":[";
    for (unsigned i = 0; i < count; i++) {
        char digits[16];
        snprintf(digits, sizeof digits, "%x", i);
        text += (i == 0 ? "\"" : ",\"") + prefix + digits + "\"";
    }
    return text + "]";
}

TEST(ConfigTree, Sizes)
{
    const std::string many = "ERROR: config array of 257 elements is too long (256 at most) for ";
    const std::string large = "ERROR: config value of 65536 bytes is too long (65535 at most) for ";
    EXPECT_EQ(load(array("radio", "", 256)), "4:00:00000100 ");
    EXPECT_EQ(load(array("radio", "", 257)), many + "'wtp_cfg.radio[]'.\n");
    EXPECT_EQ(load(array("colour", "", 257)), ""); // no setting

    const std::string hosts = load(array("ac_list", "h", 255)), zeros(508, '0');
    EXPECT_TRUE(hosts.starts_with("90::6830" + zeros + "6831"));
    EXPECT_TRUE(hosts.ends_with("686665" + zeros.substr(2) + " "));
    EXPECT_EQ(load(array("ac_list", "h", 256)), "ERROR: config array of 256 elements is too long "
                                                "(255 at most) for 'wtp_cfg.ac_list[]'.\n");

    const std::string wlan = "\"radio\":[{\"wlan\":[{", counts = "4:00:00000001 17:0000:00000001 ";
    const std::string macs = load(wlan + array("l2macWlist", "2:0:0:0:0:", 256) + "}]}]");
    EXPECT_TRUE(macs.ends_with("0200000000fe0200000000ff ")) << macs;
    const std::string text = wlan + "\"hotspot20\":\"" + std::string(65535, 'n');
    EXPECT_EQ(load(text + "\"}]}]").size(), counts.size() + 9 + 2 * 65535 + 1);
    EXPECT_EQ(load(text + "n\"}]}]"), large + "'wtp_cfg.radio[].wlan[].hotspot20'.\n");
}
