// SPDX-License-Identifier: MIT
// The machine of a roll-out with one device, and the batches of many.
#include "rollout/roll.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

const Mac MAC = {{2, 0, 0, 0, 0, 1}};

struct Stages : Roll::Listener {
    std::string seen;
    void changed(const RollDevice &device) override
    {
        seen += "wsuSdftks"[static_cast<size_t>(device.stage)];
    }
};

// A look is written as a version and marks: r it has restarted, o offline, c state changed, eN
// upgrade state N, bV busy and version V is announced; or - when the device is not listed.
Observation look_of(const std::string &event)
{
    Observation seen;
    if (event == "-")
        return seen;
    seen.listed = seen.online = true;
    seen.version = event.substr(0, event.find_first_of("rocbe"));
    seen.uptime = 1000;
    for (size_t i = seen.version.size(); i < event.size(); i++)
        if (event[i] == 'b') {
            seen.busy = true;
            seen.progress = 40;
            seen.announced = event.substr(i + 1);
            break;
        } else if (event[i] == 'e') {
            seen.upg_state = static_cast<uint8_t>(event[++i] - '0');
        } else {
            seen.online = seen.online && event[i] != 'o';
            seen.uptime = event[i] == 'r' ? 0 : seen.uptime;
            seen.change_time += event[i] == 'c';
        }
    return seen;
}

// Other events: aN the answer N to a request, x a request without reply, kN what is known: N steps
// are left, +N seconds pass, sN the controller is silent for N seconds, ! a signal.
void feed(Roll &roll, const std::string &event, double &now)
{
    const double number = atof(event.c_str() + 1);
    switch (event[0]) {
    case 'a':
        EXPECT_EQ(roll.pending().size(), 1U) << event;
        roll.ask({MAC});
        return roll.answered(MAC, static_cast<uint8_t>(number), now);
    case 'x':
        EXPECT_EQ(roll.pending().size(), 1U);
        roll.ask({MAC});
        return roll.unanswered({MAC}, now);
    case 'k':
        EXPECT_EQ(roll.unclear().size(), 1U) << event;
        return roll.steps_known(MAC, static_cast<unsigned>(number), now);
    case '+':
        now += number;
        return;
    case 's':
        now += number;
        return roll.silent(now - number, now);
    case '!':
        return roll.halt(Halt::signal);
    default:
        return roll.look({{MAC, look_of(event)}}, now, now);
    }
}

struct Case {
    const char *to; // or + where an older version is allowed
    unsigned steps; // 0: it is upgrading already, and they are not known
    const char *events;
    const char *stages; // first letters, S for settling, k for unknown
    const char *reason;
};

const Case CASES[] = {
    // Done is what has its target, has restarted, is online, and stays so for 30 s.
    {"", 1, "1 a0 1b2 1o 2r +29 2r +1 2r", "suSd", ""},
    {"", 1, "1 a0 1b2 s899 1b2 s102 2 +30 2", "suSd", ""}, // by its uptime
    {"", 1, "1 a0 1b2 1o 2 +29 1o 2 +29 2 +1 2", "suSuSd", ""},
    {"", 1, "1 a0 1b2 2r +29 2rc +29 2rc +1 2rc", "suSd", ""},
    {"", 1, "1 a0 1b2 2 +99 2 +700 2 +101 2", "sut", "was not seen to restart"},
    {"", 1, "1 a0 1b2 1o 2 +20 2c +880 2cc", "suSt", "not settled in time"},
    // What it is to have is announced; or known by asking where no upgrade was seen.
    {"", 1, "1 a0 2r k0 +30 2r", "sSd", ""},
    {"", 1, "1 a0 2r k1 2r +9 2r +1 2r", "sf", "came back with version 2"},
    {"", 1, "1 a0 1b 2r +9 2r +1 2r", "suf", "came back with version 2"}, // announced nothing
    {"", 1, "1 a0 1b2 r +9 r +1 r", "suf", "came back with version -"},
    {"", 1, "1 a0 1b2 0.9-or r +10 3r +9 3r +1 3r", "suf", "came back with version 3"},
    {"", 1, "1 a0 1b2 1 +9.9 1 +.1 1", "suf", "came back with its old version"},
    {"", 1, "1 a0 1b2 1 +10 1b2 1 +9 1b2 1o 2r +30 2r", "suSd", ""},
    {"", 1, "1 a0 1b0", "suf", "announces the older version 0"},
    {"+", 1, "1 a0 1b0 0r +30 0r", "suSd", ""},
    {"2", 1, "1 a0 1b3", "suf", "announces version 3"},
    {"2", 1, "1 a0 3r k0 3r +10 3r", "sf", "came back with version 3"},
    {"2", 1, "1 a0 2r +30 2r", "sSd", ""},
    {"2", 2, "1 a0 1b1.5 1.5r a0 1.5b2 +1 2r +30 2r", "suwsuSd",
     ""}, // any newer one before the last step
    // It begins in time, or may begin late.
    {"", 1, "1 a0 1 +59 1 +1 1 1b2 2r +30 2r", "sfuSd", ""},
    {"", 1, "1 a0 1 1e5 +60 1e5", "sf", "did not begin (upgrade state 5)"},
    {"", 1, "1 a0 +60 1 1 1", "sf", "did not begin"},
    {"", 1, "1 a0 1b2 1b2 +900 1b2", "sut", "stayed at 40 %"},
    {"", 1, "1 a0 1b2 1o +900 -", "sut", "not in the list any more"},
    {"", 1, "1 a0 1b2 1o +900 1o", "sut", "offline"},
    {"", 1, "1o +60 1o", "f", "offline"},
    {"", 1, "- +60 -", "f", "not in the list any more"},
    {"", 1, "1 +60 1", "f", "did not begin"}, // it could not be asked
    // Answers.
    {"", 1, "1 a14", "f", "Device 02:00:00:00:00:01 denied this operation."},
    {"", 1, "1 a5", "s", "no newer firmware"},
    {"", 1, "1 a10 +59 1 a17 +1 1", "f", "Device 02:00:00:00:00:01 is not ready."},
    {"", 1, "1 a17 1 a0 1b2 2r +30 2r", "suSd", ""},
    {"", 1, "1 a12 1o 1 a0 1b2 2r +30 2r", "ssuSd", ""},
    {"", 1, "1 x 1 a10 1b2 2r +30 2r", "ssuSd", ""}, // busy by the request without reply
    {"", 1, "1 x +59 1 x +1 1", "sf", "did not begin"},
    {"", 1, "2 k1 a0 2b3 3r +30 3r", "suSd", ""}, // upgraded by others before
    {"", 1, "2 k0", "s", "no newer firmware"},
    // Two steps; and one of somebody else's that may have been the first.
    {"", 2, "1 a0 1b2 2r a17 2 a0 2b3 3r +30 3r", "suwsuSd", ""},
    {"", 2, "1 a0 2r k1 2r a5 2 +30 2", "swSd", ""}, // the first step was the last
    {"", 2, "1 a0 1b2 2r a0 2b3 2 +10 2", "suwsuf", "came back with its old version"},
    {"", 2, "1 a0 2r k1 2 x 2 a5 2 +900 2", "swsut", "was not seen to restart"},
    {"", 0, "1o 2r k0 +30 2r", "uSd", ""},
    {"", 0, "1o 2r k1 2r a0 2b3 +1 3r +30 3r", "uwsuSd", ""},
    {"", 0, "1o 3r +10 3r", "uf", "came back with version 3"}, // 2 was announced
    {"3", 0, "1o 2r k0", "uf", "announces version 2"},
    {"2", 1, "2", "s", "has this version"}, // somebody else was faster
    {"2", 1, "3", "s", "has a newer version"},
    {"", 1, "2 2b3 1 +10 1", "uf", "came back with version 1"},
    {"", 1, "2 2b3 3r +30 3r", "uSd", ""},
    {"", 1, "2 k1 a14", "f", "Device 02:00:00:00:00:01 denied this operation."}, // not up to date
    // Silence does not count; when it is long it ends all.
    {"", 1, "1 a0 1b2 s899 1b2 s899 1b2 2r +29 2r s99 2r +1 2r", "suSd", ""},
    {"", 1, "1 a0 1b2 s900", "suk", "the controller did not answer"},
};

} // namespace

TEST(Roll, OneDevice)
{
    for (const Case &row : CASES) {
        SCOPED_TRACE(row.events);
        Stages stages;
        RollDevice device;
        device.mac = MAC;
        device.from = "1";
        device.batch = 1;
        device.steps_left = row.steps;
        device.last = look_of(row.steps == 0 ? "1b2" : "1");
        if (row.steps == 0) {
            device.stage = UpgradeStage::upgrading;
            device.followed = device.foreign = true;
        }
        RollLimits limits;
        limits.allow_older = std::string(row.to) == "+";
        limits.to = limits.allow_older ? "" : row.to;
        Roll roll({device}, limits, stages);
        double now = 1000;
        EXPECT_TRUE(roll.begin_batch(now));
        std::istringstream events(row.events);
        for (std::string event; events >> event;)
            feed(roll, event, now);
        EXPECT_EQ(stages.seen, row.stages);
        EXPECT_EQ(roll.devices()[0].reason, row.reason);
        EXPECT_FALSE(roll.is_running());
        EXPECT_EQ(roll.batch_progress(), 100U);
    }
}
