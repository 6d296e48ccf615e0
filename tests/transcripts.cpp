// SPDX-License-Identifier: MIT
// Plays transcript files against zov: transcripts FILE...
//
// ZOV names the program, ZOV_WRAPPER a command to run it under, such as
// "valgrind -q --error-exitcode=99 --leak-check=full".
#include "support/transcript.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <iostream>
#include <sstream>

namespace {

PlayOptions options_from_environment()
{
    PlayOptions options;
    const char *zov = getenv("ZOV");
    options.zov = zov == nullptr ? ZOV_PROGRAM : zov;
    if (const char *wrapper = getenv("ZOV_WRAPPER")) {
        std::istringstream words(wrapper);
        for (std::string word; words >> word;)
            options.wrapper.push_back(word);
    }
    return options;
}

class Played : public testing::Test {
public:
    explicit Played(const Transcript &transcript) : transcript_(transcript) {}

    void TestBody() override
    {
        const Outcome outcome = play(transcript_, options_from_environment());
        EXPECT_EQ(outcome.out, transcript_.out);
        EXPECT_EQ(outcome.err, transcript_.err);
        EXPECT_EQ(outcome.status, transcript_.status);
        EXPECT_EQ(outcome.complaint, "");
        EXPECT_TRUE(outcome.left_behind.empty());
    }

private:
    Transcript transcript_;
};

} // namespace

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (argc < 2) {
        std::cerr << "usage: transcripts FILE...\n";
        return 2;
    }
    try {
        for (int i = 1; i < argc; i++)
            for (const Transcript &transcript : read_transcripts(argv[i]))
                testing::RegisterTest(transcript.file.c_str(),
                                      ("line " + std::to_string(transcript.line)).c_str(), nullptr,
                                      transcript.comment.c_str(), argv[i], transcript.line,
                                      [=]() -> testing::Test * { return new Played(transcript); });
    } catch (const std::exception &error) {
        std::cerr << error.what() << '\n';
        return 2;
    }
    return RUN_ALL_TESTS();
}
