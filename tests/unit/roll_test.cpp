// SPDX-License-Identifier: MIT
// The machine of a roll-out, fed with what one device shows and answers.
#include "rollout/roll.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <sstream>

namespace {

const Mac MAC = {{2, 0, 0, 0, 0, 1}};

struct Stages : Roll::Listener {
    std::string seen;
    void changed(const RollDevice &device) override
    {
        seen += "wsudftk"[static_cast<size_t>(device.stage)];
    }
};

// A letter is a seen: o for offline; 1, 2, 3 for being at rest with that version; A, B for being
// busy with version 2 or 3 announced, C with none. aN is the answer N, x a request without reply,
// +N that N seconds pass.
void feed(Roll &roll, const std::string &event, double &now)
{
    const double number = atof(event.c_str() + 1);
    switch (event[0]) {
    case 'a':
        roll.answered(MAC, static_cast<uint8_t>(number), now);
        break;
    case 'x':
        roll.unanswered({MAC});
        break;
    case '+':
        now += number;
        roll.pass_time(now);
        break;
    case 'o':
        roll.observe(MAC, {}, now);
        break;
    case 'A':
    case 'B':
    case 'C':
        roll.observe(MAC,
                     {true, true, 255, "1",
                      event == "A"   ? "2"
                      : event == "B" ? "3"
                                     : ""},
                     now);
        break;
    default:
        roll.observe(MAC, {true, false, 0, event, ""}, now);
    }
}

struct Case {
    unsigned steps;
    bool follows; // it is upgrading to version 2 already
    const char *events;
    const char *stages; // first letters, k for skipped; what was entered, in order
    const char *reason;
};

const Case CASES[] = {
    // The usual course; done only once online and at rest with what was announced.
    {1, false, "1 a0 1 A o A 2", "sud", ""},
    {1, false, "1 a0 1 1 1 1 2", "sd", ""}, // never seen upgrading
    {1, false, "1 a0 C 2", "sud", ""},
    {1, true, "A 1 o 1 A 1 2", "uud", ""}, // once at rest with the old version is no failure
    {1, false, "1 a0 A B 3", "sud", ""},
    // Failures.
    {1, false, "1 a0 A 1 1", "suf", "still has its old version"},
    {1, false, "1 a0 A 3 3", "suf", "came back with version 3"},
    {1, false, "1 a14", "f", "Device 02:00:00:00:00:01 denied this operation."},
    {1, false, "1 a10", "f", "Device 02:00:00:00:00:01 is busy."},
    {1, false, "1 a5", "k", "no newer firmware"},
    // Deadlines, of 100 s from each request on.
    {1, false, "1 +99 a0 +99 1 +1", "st", "did not begin"},
    {1, false, "1 a0 +50 A +50", "sut", "stayed at 100 %"},
    {1, true, "A o +100", "uut", "stayed offline"},
    {1, false, "+100", "f", "the controller could not be asked"},
    {1, false, "1 a0 A +99 2", "sud", ""},
    // A request without reply is sent again, unless it shows that it was done.
    {1, false, "1 x 1 1 a0 A 2", "sud", ""},
    {1, false, "1 x 1 a10 A 2", "sud", ""},
    {1, false, "1 x A 2", "ud", ""},
    {1, false, "1 x 2", "d", ""},
    {1, false, "1 2 a0 B 2 2", "suf", "still has its old version"}, // was upgraded by others
    // Two steps.
    {2, false, "1 a0 A 2 a0 B 3", "suwsud", ""},
    {2, false, "1 a0 A 2 a17 2 a12 2 a0 B 3", "suwsud", ""},
    {2, false, "1 a0 A 2 a17 +100", "suwf", "Device 02:00:00:00:00:01 is not ready."},
    {2, false, "1 a0 A 2 a5", "suwd", ""},
    {2, false, "1 a0 A 2 +99 a0 +99 B 2 2", "suwsuf", "still has its old version"},
};

} // namespace

TEST(Roll, Stages)
{
    for (const Case &row : CASES) {
        SCOPED_TRACE(row.events);
        RollDevice device;
        device.mac = MAC;
        device.from = "1";
        device.steps = row.steps;
        if (row.follows) {
            device.stage = UpgradeStage::upgrading;
            device.to = "2";
        }
        Stages stages;
        Roll roll({device}, {10, 0, 100}, stages);
        double now = 1000;
        ASSERT_TRUE(roll.begin_batch(now));
        std::string seen = row.follows ? "u" : "";
        std::istringstream events(row.events);
        for (std::string event; events >> event;)
            feed(roll, event, now);
        EXPECT_EQ(stages.seen, row.follows && row.stages[1] == 'u' ? row.stages + 1 : row.stages);
        EXPECT_EQ(roll.devices()[0].reason, row.reason);
        EXPECT_TRUE(roll.running().empty());
        EXPECT_EQ(roll.batch_progress(), 100u);
    }
}

TEST(Roll, Batches)
{
    Stages stages;
    std::vector<RollDevice> devices(9);
    for (uint8_t i = 0; i < devices.size(); i++) {
        devices[i].mac.byte[5] = i;
        if (i >= 7)
            devices[i].stage = i == 7 ? UpgradeStage::upgrading : UpgradeStage::skipped;
    }
    Roll roll(devices, {3, 1, 100}, stages);
    std::string batches;
    for (const RollDevice &device : roll.devices())
        batches += std::to_string(device.batch);
    EXPECT_EQ(batches, "112223310");
    // The third does not begin: two failed.
    for (int batch = 1; batch <= 2; batch++) {
        ASSERT_TRUE(roll.begin_batch(0));
        EXPECT_EQ(roll.running().size(), 3u);
        const std::vector<Mac> asked = roll.pending();
        for (const Mac &mac : asked)
            roll.answered(mac, mac == asked[0] ? 14 : 5, 0);
        roll.observe(devices[7].mac, {true, false, 0, "new", ""}, 1);
        EXPECT_EQ(roll.whole_progress(), roll.batch() * 100 * 3 / 8);
    }
    EXPECT_FALSE(roll.begin_batch(1));
    EXPECT_EQ(roll.count(UpgradeStage::waiting), 2u);
}
