// SPDX-License-Identifier: MIT
// Everything that can fail around zov, failing in turn. A case is a transcript: of each command and
// form the one with the most bytes.
#include "support/transcript.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <set>

namespace fs = std::filesystem;

namespace {

// In how many places a reply is cut; ZOV_LONG asks for more (reading is cut at every byte
// elsewhere).
const size_t CUTS = getenv("ZOV_LONG") != nullptr ? 200 : 20;

size_t size_of(const Transcript &transcript)
{
    size_t size = 0;
    for (const Step &step : transcript.steps)
        size += step.bytes.size();
    for (const auto &[name, content] : transcript.files)
        size += content.size();
    return size;
}

bool has_word(const Transcript &transcript, const char *word)
{
    const auto &words = transcript.words;
    return std::find(words.begin(), words.end(), word) != words.end();
}

const std::vector<Transcript> &cases()
{
    static const std::vector<Transcript> chosen = [] {
        std::map<std::string, Transcript> largest;
        for (const auto &entry : fs::directory_iterator(TRANSCRIPT_DIR)) {
            if (entry.path().extension() != ".txt")
                continue;
            for (const Transcript &transcript : read_transcripts(entry.path())) {
                if (transcript.status != 0 || transcript.words.empty())
                    continue;
                std::string form = transcript.words[0] + " " + transcript.file;
                for (const char *word :
                     {"--json", "--breif", "--add", "--del", "--all", "--fwresult"})
                    form += has_word(transcript, word) ? word : "";
                Transcript &best = largest[form];
                if (best.words.empty() || size_of(transcript) > size_of(best))
                    best = transcript;
            }
        }
        std::vector<Transcript> list;
        for (const auto &[form, transcript] : largest)
            list.push_back(transcript);
        return list;
    }();
    return chosen;
}

const Transcript &richest(const char *word)
{
    const Transcript *best = nullptr;
    for (const Transcript &transcript : cases())
        if (transcript.words[0] == "wtps" && has_word(transcript, word) &&
            (best == nullptr || size_of(transcript) > size_of(*best)))
            best = &transcript;
    return *best;
}

// Plays with some faults; `met` tells whether one was met.
Outcome play_with(const Transcript &transcript, const std::vector<std::string> &faults, bool &met)
{
    const std::string log = "/tmp/zov-fault." + std::to_string(getpid());
    PlayOptions options;
    options.zov = ZOV_FAULTY;
    options.environment = faults;
    options.environment.push_back("FAULT_LOG=" + log);
    const Outcome outcome = play(transcript, options);
    met = fs::remove(log);
    EXPECT_TRUE(outcome.left_behind.empty()) << outcome.left_behind.front();
    return outcome;
}

std::string setting(const char *name, int number)
{
    std::string text(name);
    return text.append("=").append(std::to_string(number));
}

std::string name_of(const Transcript &transcript)
{
    return transcript.file + " line " + std::to_string(transcript.line);
}

bool is_one_line_about_memory(const std::string &err)
{
    const bool one_line = std::count(err.begin(), err.end(), '\n') == 1 && err.ends_with('\n');
    return one_line && (err.starts_with("ERROR: Out of memory") ||
                        err.starts_with("ERROR: Invalid --mac argument") ||
                        err.starts_with("ERROR: Invalid --client argument"));
}

} // namespace

TEST(Torture, EveryAllocationFailsInTurn)
{
    unsigned failures = 0;
    std::set<std::string> messages;
    for (const Transcript &transcript : cases()) {
        SCOPED_TRACE(name_of(transcript));
        bool met = true;
        for (int n = 1; met; n++) {
            const Outcome outcome = play_with(transcript, {setting("FAULT_ALLOC", n)}, met);
            if (!met) {
                EXPECT_EQ(outcome.out, transcript.out);
                EXPECT_EQ(outcome.status, 0);
                break;
            }
            failures++;
            messages.insert(outcome.err.substr(0, outcome.err.find('=')));
            EXPECT_EQ(outcome.received.back(), '\0') << "no goodbye after allocation " << n;
            // What a device answered before stands before it.
            std::string err = outcome.err;
            const size_t last = err.rfind('\n', err.size() < 2 ? 0 : err.size() - 2);
            if (last != std::string::npos && transcript.err.starts_with(err.substr(0, last + 1)))
                err.erase(0, last + 1);
            EXPECT_TRUE(is_one_line_about_memory(err)) << n << ": " << outcome.err;
            EXPECT_EQ(outcome.status, 1) << n;
            EXPECT_EQ(outcome.out, "") << n;
        }
    }
    EXPECT_GT(failures, 150U);
    // The tables of a switch's topology have messages of their own.
    EXPECT_TRUE(messages.contains("ERROR: Out of memory(switchTopoDevCount)\n"));
    EXPECT_TRUE(messages.contains("ERROR: Out of memory(linkCount"));
    EXPECT_TRUE(messages.contains("ERROR: Out of memory.\n"));
}

TEST(Torture, EveryTransferFailsInTurn)
{
    struct Fault {
        const char *call;
        const char *message;
    };
    for (const Fault fault : {Fault{"FAULT_SEND", "ERROR: writing socket failed for reason: "},
                              Fault{"FAULT_RECV", "ERROR: reading socket failed for reason: "}})
        for (const int error : {ECONNRESET, EPIPE})
            for (const Transcript &transcript : cases()) {
                SCOPED_TRACE(name_of(transcript) + " " + fault.call);
                bool met = true;
                for (int n = 1; met; n++) {
                    const Outcome outcome = play_with(
                        transcript, {setting(fault.call, n), setting("FAULT_ERRNO", error)}, met);
                    if (!met)
                        break;
                    const std::string line = std::string(fault.message) + strerror(error) + "\n";
                    EXPECT_TRUE(outcome.err.ends_with(line)) << outcome.err;
                    // Only the goodbye may fail without consequences.
                    const bool whole = outcome.err == transcript.err + line;
                    EXPECT_EQ(outcome.status, whole && outcome.status == 0 ? 0 : 1);
                    EXPECT_EQ(outcome.out, outcome.status == 0 ? transcript.out : "");
                }
            }
}

TEST(Torture, NoSocketAndAFailingClose)
{
    Transcript transcript;
    transcript.words = {"online"};
    transcript.steps = {{Step::expect, std::string("\1\0\0\0\7\0\0", 7)}, {Step::reply, "\1"}};
    bool met = false;
    Outcome outcome = play_with(transcript, {"FAULT_SOCKET=1"}, met);
    EXPECT_TRUE(met);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "ERROR: create socket failed.\n");

    outcome = play_with(transcript, {"FAULT_CLOSE=1"}, met);
    EXPECT_TRUE(met);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "online WTP: 0/0\n");
    EXPECT_EQ(outcome.err, "ERROR: : Input/output error\n");
}

TEST(Torture, InterruptionsAndShortCountsChangeNothing)
{
    for (const Transcript &transcript : cases())
        for (const char *fault : {"FAULT_EINTR=1", "FAULT_ONE_BYTE=1"}) {
            SCOPED_TRACE(name_of(transcript) + " " + fault);
            bool met = false;
            const Outcome outcome = play_with(transcript, {fault}, met);
            EXPECT_TRUE(met);
            EXPECT_EQ(outcome.out, transcript.out);
            EXPECT_EQ(outcome.err, transcript.err);
            EXPECT_EQ(outcome.status, 0);
            EXPECT_EQ(outcome.complaint, "");
        }
}

TEST(Torture, RepliesCutAtAnyByte)
{
    for (Transcript transcript : cases()) {
        SCOPED_TRACE(name_of(transcript));
        const std::vector<Step> steps = transcript.steps;
        for (size_t s = 0; s < steps.size(); s++) {
            if (steps[s].kind != Step::reply)
                continue;
            const size_t size = steps[s].bytes.size();
            for (size_t cut = 0; cut < size; cut += std::max<size_t>(1, size / CUTS)) {
                transcript.steps.assign(steps.begin(), steps.begin() + static_cast<long>(s));
                transcript.steps.push_back({Step::reply, steps[s].bytes.substr(0, cut)});
                transcript.steps.push_back({Step::hang_up, ""});
                bool met = false;
                const Outcome outcome = play_with(transcript, {}, met);
                EXPECT_EQ(outcome.status, 1) << cut;
                EXPECT_EQ(outcome.out, "") << cut;
                EXPECT_TRUE(transcript.err.starts_with(outcome.err)) << outcome.err;
            }
        }
    }
}

TEST(Torture, SignalsDuringALargeReply)
{
    Transcript transcript = richest("--json");
    std::string record;
    for (const Step &step : transcript.steps)
        if (step.kind == Step::reply)
            record += step.bytes;
    record.pop_back(); // the end marker
    std::string reply;
    while (reply.size() < 10'000'000)
        reply += record;
    const Step request = transcript.steps.front();
    transcript.steps = {request, {Step::reply, reply + '\1'}};

    bool met = false;
    const Outcome quiet = play_with(transcript, {}, met);
    EXPECT_EQ(quiet.status, 0);
    EXPECT_GT(quiet.out.size(), reply.size());
    const Outcome disturbed = play_with(transcript, {"FAULT_TIMER=1"}, met);
    EXPECT_TRUE(met);
    EXPECT_EQ(disturbed.status, 0);
    EXPECT_TRUE(disturbed.out == quiet.out);
    EXPECT_EQ(disturbed.err, "");
}
