// SPDX-License-Identifier: MIT
// The parsers of addresses, lists and settings. Each helper gives what a parser made of a text, as
// text; "" when it was refused.
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

static std::string dotted(bool good, const Ipv4 *addr, int count)
{
    std::string text;
    for (int i = 0; i < count && good; i++) {
        char quad[IPV4_TEXT_MAX];
        text.append(i == 0 ? "" : "/").append(quad, write_ipv4(quad, addr[i]));
    }
    return text;
}

static std::string three(const std::string &text)
{
    Ipv4 a[3];
    return dotted(parse_ip_settings(text.c_str(), a[0], a[1], a[2]), a, 3);
}

static std::string five(const std::string &text)
{
    Ipv4 a[5];
    return dotted(parse_ip_dns_settings(text.c_str(), a[0], a[1], a[2], a[3], a[4]), a, 5);
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
    for (const std::string good : {"192.168.1.1", "0.0.0.0", "255.255.255.255"})
        EXPECT_EQ(dotted(parse_ipv4((good + ".5").c_str(), addr), &addr, 1), good);
    for (const char *bad : {"192.168.1.256", "256.1.1.1", "192.168.1", "192.168.1.", "192.168..1",
                            "1.2.3.-1", "1,2,3,4", "host", ""})
        EXPECT_FALSE(parse_ipv4(bad, addr)) << bad;
}

// Address, mask and gateway, in which both parsers agree.
TEST(Parsers, IpSettings)
{
    for (const std::string good :
         {"0.0.0.0/0.0.0.0/0.0.0.0", "192.168.1.10/255.255.255.0/192.168.1.1",
          "10.0.0.1/255.255.255.252/0.0.0.0", "10.0.4.1/255.255.252.0/10.0.7.254",
          "126.0.0.1/255.0.0.0/126.0.0.2", "191.254.1.1/255.255.0.0/0.0.0.0",
          "223.0.0.1/128.0.0.0/240.0.0.1", "240.0.0.1/255.0.0.0/240.0.0.2",
          "1.2.3.4/128.0.0.0/0.0.0.5"}) { // a gateway may begin with 0, an address may not
        EXPECT_EQ(three(good + " x"), good);
        EXPECT_EQ(five(good), good + "/0.0.0.0/0.0.0.0");
    }
    for (const char *bad :
         {"0.0.0.0/255.255.255.0/0.0.0.0", "0.0.0.0/0.0.0.0/192.168.1.1",
          // parts above 255; all ones; no mask; nothing but mask; masks with a hole
          "10.0.0.256/255.255.255.0/0.0.0.0", "10.0.0.1/255.255.256.0/0.0.0.0",
          "10.0.0.1/255.255.255.0/10.0.256.1", "255.255.255.255/255.255.255.0/0.0.0.0",
          "10.0.0.1/255.255.255.0/255.255.255.255", "10.0.0.1/0.0.0.0/0.0.0.0",
          "10.0.0.1/255.255.255.255/0.0.0.0", "10.0.0.1/255.0.255.0/0.0.0.0",
          "10.0.0.1/127.255.255.0/0.0.0.0", "10.0.0.1/255.255.255.1/0.0.0.0",
          // first octets and host parts of the address
          "0.1.2.3/255.0.0.0/0.0.0.0", "127.0.0.5/255.0.0.0/0.0.0.0", "224.0.0.1/255.0.0.0/0.0.0.0",
          "239.255.255.1/255.0.0.0/0.0.0.0", "255.1.2.3/255.0.0.0/0.0.0.0",
          "191.255.1.1/255.255.0.0/0.0.0.0", "192.168.1.0/255.255.255.0/0.0.0.0",
          "192.168.1.255/255.255.255.0/0.0.0.0", "10.0.0.1/255.255.255.254/0.0.0.0",
          // the same of a gateway in the subnet; gateways outside
          "126.0.0.1/252.0.0.0/127.0.0.1", "223.0.0.1/128.0.0.0/224.0.0.1",
          "223.0.0.1/128.0.0.0/239.0.0.1", "254.0.0.1/254.0.0.0/255.0.0.1",
          "191.1.1.1/255.0.0.0/191.255.0.1", "192.168.1.10/255.255.255.0/192.168.1.0",
          "192.168.1.10/255.255.255.0/192.168.1.255", "10.0.4.1/255.255.252.0/10.0.8.1"})
        EXPECT_EQ(three(bad) + five(bad), "") << bad;
    EXPECT_EQ(three("192.168.1.10/255.255.255.0") + three("0.0.0.0") + three(""), "");
}

TEST(Parsers, IpDnsSettings)
{
    const std::string net = "192.168.1.10/255.255.255.0", gw = net + "/192.168.1.1";
    EXPECT_EQ(five("0.0.0.0 x"), "0.0.0.0/0.0.0.0/0.0.0.0/0.0.0.0/0.0.0.0");
    EXPECT_EQ(five(net + "/"), net + "/0.0.0.0/0.0.0.0/0.0.0.0");
    EXPECT_EQ(five(net + "/0.0.0.0/8.8.8.8"), net + "/0.0.0.0/8.8.8.8/0.0.0.0");
    EXPECT_EQ(five(gw + "/8.8.8.8/0.8.4.4/1.1.1.1"), gw + "/8.8.8.8/0.8.4.4");
    EXPECT_EQ(five(gw + "/8.8.8.8/8.8") + five(net + "/192.168.1"), "");
    for (const char *bad : {"192.168.1.10", "0.0.0", "0.0.0.0/0", "0.0.0.0/0.0.0.0/0.0.0.0/1.1.1.1",
                            "0.0.0.0/0.0.0.0/0.0.0.0/0.0.0.0/1.1.1.1", ""})
        EXPECT_EQ(five(bad), "") << bad;
    for (const std::string bad : {"10.0.0.0", "10.0.0.255", "127.0.0.1", "224.0.0.5", "239.1.1.1",
                                  "191.255.3.4", "255.1.1.1", "255.255.255.255", "8.8.8.256"})
        EXPECT_EQ(five(gw + "/" + bad) + five(gw + "/8.8.8.8/" + bad), "") << bad;
}
