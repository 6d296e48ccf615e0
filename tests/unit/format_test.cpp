// SPDX-License-Identifier: MIT
// Values of a report as text.
#include "report/format.h"
#include "util/calendar.h"

#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

TEST(Format, DataRates)
{
    std::string got;
    for (const int32_t code : {0, 1, 32, 33, 100, 101, 110, 111, 999, 1000, 1099, 1100, 5500, 6050,
                               11000, -1, -1000, INT32_MIN + 1, INT32_MAX})
        got.append(" ").append(data_rate_text(code));
    EXPECT_EQ(got,
              " auto MCS0 MCS31 VHTMCS-68 VHTMCS-1 VHTMCS0 VHTMCS9 0.1M 0.9M 1M 1M 1.1M 5.5M 6M"
              " 11M MCS-2 MCS-1001 MCS-2147483648 2147483.6M");
    EXPECT_LE(std::string(data_rate_text(INT32_MIN)).size(), 15u);
}

TEST(Format, DurationsAndDigests)
{
    std::string got;
    char text[DURATION_TEXT_MAX];
    for (const uint32_t seconds : {0u, 59u, 60u, 3599u, 3600u, 86399u, 86400u, 90061u, UINT32_MAX})
        got.append(" ").append(text, write_duration(text, seconds));
    EXPECT_EQ(got, " 0d:0h:0m:0s 0d:0h:0m:59s 0d:0h:1m:0s 0d:0h:59m:59s 0d:1h:0m:0s 0d:23h:59m:59s"
                   " 1d:0h:0m:0s 1d:1h:1m:1s 49710d:6h:28m:15s");
    const Md5Digest digest = {{0x00, 0x01, 0x0A, 0x10, 0x7F, 0x80, 0x9A, 0xA9, 0xBC, 0xDE, 0xEF,
                               0xF0, 0xFE, 0xFF, 0x55, 0xAA}};
    char digits[DIGEST_TEXT_MAX];
    EXPECT_EQ(std::string(digits, write_digest(digits, digest)),
              "00010a107f809aa9bcdeeff0feff55aa");
}

TEST(Format, CalendarIsLocal)
{
    setenv("TZ", "TST-1:30", 1); // 90 minutes east
    EXPECT_STREQ(calendar_text(0), "Thu Jan  1 01:30:00 1970\n");
    EXPECT_STREQ(calendar_text(1600000000), "Sun Sep 13 13:56:40 2020\n");
    EXPECT_STREQ(calendar_text(INT32_MIN), "Fri Dec 13 22:15:52 1901\n");
    EXPECT_STREQ(time_text(UINT32_MAX), "Sun Feb  7 07:58:15 2106\n");
    EXPECT_STREQ(time_text(0), "\n");
}

static std::string escaped(const std::string &text)
{
    testing::internal::CaptureStdout();
    json_escape(standard_output, text.c_str());
    standard_output.flush();
    return testing::internal::GetCapturedStdout();
}

TEST(Format, JsonEscape)
{
    const std::string special = "\b\t\n\f\r\"/\\", letters = "btnfr\"/\\";
    std::string text, expected;
    for (int byte = 1; byte < 256; byte++) {
        const size_t at = special.find(static_cast<char>(byte));
        text += static_cast<char>(byte);
        expected +=
            at == std::string::npos ? text.substr(text.size() - 1) : "\\" + letters.substr(at, 1);
    }
    EXPECT_EQ(escaped(text), expected);
    EXPECT_EQ(escaped(""), "");
    for (const size_t length : {2047u, 2048u, 2049u, 4096u, 65535u}) {
        std::string twice;
        for (size_t i = 0; i < length; i++)
            twice += "\\\"";
        EXPECT_EQ(escaped(std::string(length, '"')), twice) << length;
    }
}
