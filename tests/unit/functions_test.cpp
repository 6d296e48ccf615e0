// SPDX-License-Identifier: MIT
// Order and batches of devices, the bar that shows how far they are, temporary files, sizes larger
// than memory.
#include "course/batches.h"
#include "course/progress_bar.h"
#include "proto/device_kind.h"
#include "util/bytes.h"
#include "util/sizes.h"
#include "util/temp_file.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

Mac mac(uint8_t number)
{
    return {{2, 0, 0, 0, 0, number}};
}

// A letter for each device: a access point, s switch, o other; its position is its address.
std::vector<BatchDevice> fleet(const std::string &kinds)
{
    std::vector<BatchDevice> devices;
    for (const char kind : kinds) {
        const auto number = static_cast<uint8_t>(devices.size());
        const int type = kind == 'a'   ? int{DEVICE_ACCESS_POINT}
                         : kind == 's' ? int{DEVICE_SWITCH}
                                       : 1;
        devices.push_back({mac(number), std::string("name") + static_cast<char>('a' + number),
                           static_cast<uint8_t>(type)});
    }
    return devices;
}

// The batches as positions in letters, for instance "ab c".
std::string batches(const std::string &kinds, const char *sizes, bool keep_order = false,
                    const std::vector<std::pair<uint8_t, uint8_t>> &links = {})
{
    BatchPlan plan;
    EXPECT_TRUE(take_batch_sizes(sizes, plan.sizes));
    plan.chosen = kinds.size();
    plan.keep_order = keep_order;
    for (const auto &[from, to] : links)
        plan.links[mac(from)].insert(mac(to));
    std::string text;
    for (const std::vector<size_t> &batch : make_batches(fleet(kinds), plan)) {
        text += text.empty() ? "" : " ";
        for (const size_t position : batch)
            text += static_cast<char>('a' + position);
    }
    return text;
}

} // namespace

TEST(Batches, Sizes)
{
    EXPECT_EQ(batches("aaaaaaaaaa", "1,3,50%", true), "a bcd efghi j");
    EXPECT_EQ(batches("aaa", "1%", true), "a b c");
    EXPECT_EQ(batches("aaoosa", "2", true), "ab cd e f"); // one kind in each
    EXPECT_EQ(batches("soa", "9"), "c b a");              // access points, others, switches
}

TEST(Batches, AsFewAsPossibleFromOneSwitch)
{
    // Switch i has a to d, switch j has e to h: each batch of two takes one of both.
    const std::vector<std::pair<uint8_t, uint8_t>> links = {{8, 0}, {8, 1}, {8, 2}, {8, 3},
                                                            {9, 4}, {9, 5}, {9, 6}, {9, 7}};
    EXPECT_EQ(batches("aaaaaaaa", "2", false, links), "ae bf cg dh");
    // Six of one switch and two of no other: no batch has more than three of the six.
    EXPECT_EQ(batches("aaaaaaaa", "4", false, {{9, 0}, {9, 1}, {9, 2}, {9, 3}, {9, 4}, {9, 5}}),
              "aceg bdfh");
    EXPECT_EQ(batches("aaaaaa", "3"), "ace bdf"); // by name, far apart
}

TEST(Batches, SwitchesFromTheEdge)
{
    // A line a-b-c-d-e, which the ends tell of; f is alone. None with one that it is linked to.
    EXPECT_EQ(batches("ssssss", "9", false, {{0, 1}, {2, 1}, {2, 3}, {4, 3}}), "aef bd c");
    // Switches that were not chosen count: a is between b and another.
    EXPECT_EQ(batches("ss", "9", false, {{3, 0}, {0, 1}, {3, 4}}), "b a");
    EXPECT_EQ(batches("sss", "9", false, {{0, 1}, {1, 2}, {2, 0}}), "a b c"); // a ring
}

TEST(ProgressBar, FitsTheTerminal)
{
    const std::string counts = "  4 done, 1 failed";
    const std::pair<size_t, std::string> shown[] = {
        {300, "batch 2/3 [" + std::string(15, '#') + std::string(15, '-') + "]  50 %  all [" +
                  std::string(12, '#') + std::string(18, '-') + "]  40 %" + counts},
        {58, "batch 2/3 [##--]  50 %  all [#---]  40 %" + counts},
        {57, "all [#---]  40 %" + counts},
        {34, "all [#---]  40 %" + counts},
        {33, "all 40 %" + counts},
        {26, "all 40 %" + counts},
        {25, "40% 4 ok 1 bad"},
        {14, "40% 4 ok 1 bad"},
        {13, "40% 4 ok 1 ba"},
    };
    for (const auto &[columns, text] : shown)
        EXPECT_EQ(progress_text({2, 3, 50, 40, 4, 1}, columns), text) << columns;
    EXPECT_EQ(progress_text({1, 1, 100, 100, 5, 0}, 57), "all [####] 100 %  5 done, 0 failed");
}

TEST(TempFile, IsNotWrittenThroughALink)
{
    const std::string folder = testing::TempDir() + "/zov." + std::to_string(getpid());
    const std::string name = folder + "/file", victim = folder + "/victim";
    std::filesystem::create_directory(folder);
    {
        const std::ofstream empty(victim);
        TempFile file(name.c_str());
        ASSERT_TRUE(file.created() && std::filesystem::remove(name));
        std::filesystem::create_symlink(victim, name); // somebody puts it there
        EXPECT_FALSE(file.write("secret", 6));
        EXPECT_EQ(std::filesystem::file_size(victim), 0U);
    }
    EXPECT_EQ(std::filesystem::remove_all(folder), 2U); // and the victim
}

TEST(Sizes, AreTheLargestWhenTheyDoNotFit)
{
    constexpr size_t HALF = SIZE_MAX / 2 + 1; // a power of two
    EXPECT_EQ(product_of_sizes(HALF / 2, 2), HALF);
    EXPECT_EQ(product_of_sizes(HALF, 2), SIZE_MAX);
    EXPECT_EQ(product_of_sizes(HALF, HALF), SIZE_MAX);
    EXPECT_EQ(product_of_sizes(0, SIZE_MAX), 0U);
    EXPECT_EQ(sum_of_sizes(SIZE_MAX - 5, 4), SIZE_MAX - 1);
    EXPECT_EQ(sum_of_sizes(SIZE_MAX - 5, 16), SIZE_MAX);
}

TEST(Bytes, AreAsTheyWereWhenMemoryIsShort)
{
    Bytes bytes;
    ASSERT_TRUE(bytes.append("abc", 3));
    EXPECT_EQ(bytes.prepare(SIZE_MAX - 2), nullptr);
    EXPECT_EQ(bytes.prepare(PTRDIFF_MAX), nullptr);
    ASSERT_TRUE(bytes.append("def", 3));
    EXPECT_EQ(std::string(bytes.data(), bytes.data() + bytes.size()), "abcdef");
}
