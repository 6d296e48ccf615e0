// SPDX-License-Identifier: MIT
// Every one-bit and one-byte change of rich replies, through decoding and all printers: none may
// crash, leak or use more memory than the reply is worth (under the sanitizers they would tell).
#include "device/wtp_list.h"
#include "report/json_report.h"
#include "report/text_report.h"
#include "support/rich_reply.h"
#include "util/output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
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
    if (receive_wtp_list(source, list) != 0)
        return false;
    print_wtp_brief(list);
    print_wtp_details(list, true, false);
    print_wtp_json(list, true, false);
    return true;
}

class Mutations : public testing::TestWithParam<const char *> {};

} // namespace

TEST_P(Mutations, OfOneBitAndOneByte)
{
    std::string reply = rich_reply(GetParam());
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
