// SPDX-License-Identifier: MIT
// Every one-bit and one-byte change of rich replies, and every place in them as a count of what
// never comes, through decoding and all printers: none may crash, leak, take long or use more
// memory than the reply is worth (under the sanitizers they would tell).
#include "device/wtp_list.h"
#include "report/json_report.h"
#include "report/text_report.h"
#include "util/byte_order.h"
#include "util/output.h"

#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

namespace {

// Sends what is printed nowhere while it lives.
class Quiet {
public:
    Quiet() : out_(dup(STDOUT_FILENO)), err_(dup(STDERR_FILENO))
    {
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, STDOUT_FILENO);
        dup2(null, STDERR_FILENO);
        close(null);
    }
    Quiet(const Quiet &) = delete;
    Quiet &operator=(const Quiet &) = delete;
    ~Quiet()
    {
        standard_output.flush();
        dup2(out_, STDOUT_FILENO);
        dup2(err_, STDERR_FILENO);
        close(out_);
        close(err_);
    }

private:
    int out_, err_;
};

// Returns whether the reply was whole.
bool read_and_print(const std::string &reply)
{
    ByteSource source;
    source.at = reinterpret_cast<const uint8_t *>(reply.data());
    source.end = source.at + reply.size();
    WtpList list;
    if (receive_wtp_list(source, list) != 0) {
        EXPECT_EQ(list.reply.size(), 0U); // nothing of it is left
        return false;
    }
    print_wtp_brief(list);
    print_wtp_details(list, {true, false});
    print_wtp_json(list, {true, false});
    return true;
}

class Mutations : public testing::TestWithParam<const char *> {};

} // namespace

TEST_P(Mutations, OfBitsBytesAndCounts)
{
    std::ifstream in(std::string(REPLY_FOLDER "/") + GetParam(), std::ios::binary);
    std::string reply(std::istreambuf_iterator<char>(in), {});
    ASSERT_GT(reply.size(), 1500U);
    unsigned whole = 0, failed = 0;
    {
        const Quiet quiet;
        ASSERT_TRUE(read_and_print(reply));
        for (char &byte : reply) {
            const char right = byte;
            for (int bit = 0; bit < 8; bit++) {
                byte = static_cast<char>(right ^ (1 << bit));
                (read_and_print(reply) ? whole : failed)++;
            }
            for (const int value : {0x00, 0x7F, 0x80, 0xFF}) {
                byte = static_cast<char>(value);
                (read_and_print(reply) ? whole : failed)++;
            }
            byte = right;
        }
        for (const uint32_t count : {40000U, 1U << 22, 0x7FFFFFFFU, 0xFFFFFFFFU})
            for (size_t at = 0; at + sizeof count <= reply.size(); at++) {
                std::string hostile = reply;
                to_big_endian(&hostile[at], count);
                const clock_t start = clock();
                read_and_print(hostile);
                EXPECT_LT(clock() - start, 5 * CLOCKS_PER_SEC)
                    << at; // seconds when rows are touched
            }
    }
    EXPECT_GT(whole, reply.size()); // most bytes are values
    EXPECT_GT(failed, reply.size() / 10);
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
#ifndef __SANITIZE_ADDRESS__
    EXPECT_LT(usage.ru_maxrss, 64 * 1024); // KiB
#endif
}

INSTANTIATE_TEST_SUITE_P(RichReplies, Mutations, testing::Values("access_point", "switch"));
