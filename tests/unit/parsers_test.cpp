// SPDX-License-Identifier: MIT
// The parsers of addresses and lists. Each helper gives what a parser made of a text, as text; ""
// when it was refused.
#include "util/ipv4.h"
#include "util/mac.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>

static std::string mac(const std::string &text)
{
    Mac mac;
    return parse_mac(text.c_str(), mac) ? mac_to_text(mac) : "";
}

static std::string macs(const std::string &text)
{
    MacList list;
    EXPECT_TRUE(parse_mac_list("2:2:2:2:2:77", list)); // must not show
    std::string joined = parse_mac_list(text.c_str(), list) ? "good" : "";
    for (const Mac &one : list)
        joined.append(" ").append(mac_to_text(one));
    return joined;
}

TEST(Parsers, Mac)
{
    EXPECT_EQ(mac("00:11:22:aa:BB:cc"), "00:11:22:AA:BB:CC");
    EXPECT_EQ(mac("0:11:22:33:44:5junk"), "00:11:22:33:44:05");
    EXPECT_EQ(mac(" 0x1: 2:3:4:0005:0xfe:9"), "01:02:03:04:05:FE");
    EXPECT_EQ(mac("01:00:5e:00:00:01"), "01:00:5E:00:00:01");
    EXPECT_EQ(mac("0:0:0:0:0:1"), "00:00:00:00:00:01");
    for (const char *bad : {"00:00:00:00:00:00", "00:11:22:33:44:100", "100:11:22:33:44:55",
                            "00:11:22:33:44:-1", "00:11:22:33:44", "00:11:22:33:44:",
                            "00:11:22:33:44:gg", "00-11-22-33-44-55", ":11:22:33:44:55", ""})
        EXPECT_EQ(mac(bad), "") << bad;
}

TEST(Parsers, MacList)
{
    const std::string one = " 00:11:22:AA:44:55", two = " 00:11:22:AA:44:56";
    EXPECT_EQ(macs("0:11:22:aa:44:56,00:11:22:AA:44:55,0:11:22:aa:44:56"), "good" + two + one);
    EXPECT_EQ(macs(",0:11:22:aa:44:55,,,0:11:22:aa:44:56,0:11:22:AA:44:55,"), "good" + one + two);
    EXPECT_EQ(macs("") + macs(",,,"), "goodgood");
    for (const char *bad : {"01:00:5e:00:00:01", "0:11:22:33:44:55,03:11:22:33:44:55",
                            "0:11:22:33:44:55,00:00:00:00:00:00", "0:11:22:33:44:55, "})
        EXPECT_EQ(macs(bad), "") << bad;

    // Far more in short form than a text of this length could hold in full form, all twice.
    std::string text, expected = "good";
    for (int i = 0; i < 8000; i++) {
        char item[32];
        snprintf(item, sizeof item, "0:0:0:1:%x:%x", i / 80 % 50, i % 80);
        text.append(item).append(",");
        if (i < 4000)
            expected.append(" ").append(mac(item));
    }
    EXPECT_EQ(macs(text), expected);
}

TEST(Parsers, Ipv4)
{
    Ipv4 addr;
    for (const std::string good : {"192.168.1.1", "0.0.0.0", "255.255.255.255", "1.20.99.100"}) {
        char text[IPV4_TEXT_MAX];
        EXPECT_TRUE(parse_ipv4((good + ".5").c_str(), addr));
        EXPECT_EQ(std::string(text, write_ipv4(text, addr)), good);
    }
    for (const char *bad : {"192.168.1.256", "256.1.1.1", "192.168.1", "192.168.1.", "192.168..1",
                            "1.2.3.-1", "1,2,3,4", "host", ""})
        EXPECT_FALSE(parse_ipv4(bad, addr)) << bad;
}
