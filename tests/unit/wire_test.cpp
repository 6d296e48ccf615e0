// SPDX-License-Identifier: MIT
// From bytes to device records: byte order, byte sources, the reply reader, whole replies.
#include "support/rich_reply.h"

#include "device/wtp_list.h"
#include "proto/reply_reader.h"
#include "util/byte_order.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <vector>

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

template <class Int> static std::string wire_bytes(Int number)
{
    char wire[sizeof number];
    to_big_endian(wire, number);
    return {wire, sizeof wire};
}

TEST(ByteOrder, AroundPowersOfTwo)
{
    EXPECT_EQ(wire_bytes<int16_t>(-60), "\xFF\xC4");
    EXPECT_EQ(from_big_endian<int32_t>("\x80\0\0"), INT32_MIN);
    for (unsigned bit = 0; bit < 32; bit++)
        for (const uint32_t number : {(1u << bit) - 1, 1u << bit, (1u << bit) + 1}) {
            const std::string wire = wire_bytes(number);
            for (unsigned i = 0; i < 4; i++)
                EXPECT_EQ(static_cast<uint8_t>(wire[i]), number >> (24 - 8 * i) & 0xFF) << number;
            EXPECT_EQ(from_big_endian<uint32_t>(wire.data()), number);
            EXPECT_EQ(wire_bytes(static_cast<uint16_t>(number)), wire.substr(2)) << number;
            EXPECT_EQ(from_big_endian<uint16_t>(wire.data() + 2), number & 0xFFFF);
        }
}

// Gives its bytes in pieces, and then the end of the stream (0) or a failure (-1).
struct Pieces : ByteSource {
    Pieces(std::string content, size_t piece_size, ssize_t last = 0)
        : bytes(std::move(content)), piece(piece_size), ending(last), read_ahead(piece_size)
    {
        receive = [](ByteSource &source, void *to, size_t room) {
            return static_cast<Pieces &>(source).next_piece(to, room);
        };
        ahead = read_ahead.data();
        ahead_room = read_ahead.size();
    }

    ssize_t next_piece(void *to, size_t room)
    {
        receives++;
        errno = EIO;
        const size_t count = bytes.copy(static_cast<char *>(to), std::min(piece, room), used);
        used += count;
        return count == 0 ? ending : static_cast<ssize_t>(count);
    }

    std::string bytes;
    size_t piece, used = 0;
    ssize_t ending;
    std::vector<uint8_t> read_ahead; // exactly as large, so that a read beyond it is noticed
    int receives = 0;
};

TEST(RecvAll, PiecesOfEverySize)
{
    char got[16] = {};
    for (size_t piece = 1; piece <= 11; piece++) {
        Pieces source("0123456789", piece);
        EXPECT_EQ(recv_all(source, got, 3), 3);
        EXPECT_EQ(recv_all(source, got + 3, 6), 6);
        EXPECT_EQ(std::string(got), "012345678");
        EXPECT_EQ(recv_all(source, got, 5), 1); // the end comes first
        EXPECT_EQ(recv_all(source, got, 5), 0);
    }
    Pieces broken("0123", 3, -1);
    EXPECT_EQ(recv_all(broken, got, 10), -1);
}

TEST(ReplyReader, RemembersTheFirstFailure)
{
    for (const ssize_t ending : {0, -1}) {
        Pieces source({1, 2, 'x', 'x', 'x'}, 4, ending);
        ReplyReader reply(source);
        CaptureStderr();
        EXPECT_EQ(reply.number<uint16_t>(), 0x0102);
        EXPECT_TRUE(reply.ok());
        EXPECT_EQ(reply.number<uint32_t>(), 0u); // three of its bytes came
        const int receives = source.receives;
        Text text;
        reply.read(text);
        EXPECT_TRUE(text.absent());
        EXPECT_EQ(reply.number<uint8_t>(), 0);
        EXPECT_EQ(source.receives, receives);
        EXPECT_FALSE(reply.ok());
        const std::string error = "ERROR: reading socket failed for reason: Input/output error\n";
        EXPECT_EQ(GetCapturedStderr(), ending == 0 ? "" : error);
    }
}

TEST(ReplyReader, TextLengths)
{
    for (const size_t length : {0u, 1u, 5u, 65535u}) {
        const std::string text(length, 'x');
        Pieces source(wire_bytes(static_cast<uint16_t>(length)) + text + "zz", 1000);
        ReplyReader reply(source);
        Text got;
        reply.read(got);
        EXPECT_EQ(got.c_str(), text);
        EXPECT_EQ(got.absent(), length == 0);
        EXPECT_EQ(reply.number<uint8_t>(), 'z');
        reply.set_failed(); // then bytes at hand are not given either
        EXPECT_EQ(reply.number<uint8_t>(), 0);
    }
}

static int read_list(const std::string &reply, WtpList &list)
{
    Pieces source(reply, reply.size());
    return receive_wtp_list(source, list);
}

TEST(Records, CutAtEveryByte)
{
    CaptureStderr();
    for (const std::string &reply : {rich_reply("access_point"), rich_reply("switch")})
        for (size_t length = 0; length <= reply.size(); length++) {
            Pieces source(reply.substr(0, length), 1 + length % 97);
            WtpList list;
            ASSERT_EQ(receive_wtp_list(source, list), length < reply.size()) << length;
            ASSERT_EQ(list.reply.size(), length < reply.size() ? 0 : length);
        }
    EXPECT_EQ(GetCapturedStderr(), "");
}

// Tables that are announced and never come: it must not take long, nor cost memory, nor leave
// anything of the list. Any number may be a count, so each is tried.
TEST(Records, HostileCounts)
{
    CaptureStderr();
    for (const std::string &rich : {rich_reply("access_point"), rich_reply("switch")})
        for (const uint32_t count : {40000u, 1u << 22, 0x7FFFFFFFu, 0xFFFFFFFFu})
            for (size_t at = 1; at + 4 <= rich.size(); at++) {
                std::string reply = rich;
                reply.replace(at, 4, wire_bytes(count));
                WtpList list;
                const clock_t start = clock();
                const int status = read_list(reply, list);
                EXPECT_LT(clock() - start, 5 * CLOCKS_PER_SEC)
                    << at; // seconds: tables are not touched
                EXPECT_EQ(list.reply.size() == 0, status == 1) << at;
            }
    GetCapturedStderr();
    rusage usage = {};
    EXPECT_EQ(getrusage(RUSAGE_SELF, &usage), 0);
    EXPECT_LT(usage.ru_maxrss, 512 * 1024); // 2^22 rows that were touched would take gigabytes
}
