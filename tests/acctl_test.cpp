// SPDX-License-Identifier: MIT
// exit and kill, without touching any process but children of this test: kill sees a fake ps that
// stands first in PATH, exit a pid file that names a child.
#include "support/transcript.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr const char *PID_FILE = "/var/run/ac.pid";

class ProcessControl : public testing::Test {
protected:
    void SetUp() override
    {
        char name[] = "/tmp/zov-acctl.XXXXXX";
        folder_ = mkdtemp(name);
        start_victim();
    }

    void start_victim()
    {
        victim_ = fork();
        if (victim_ == 0) {
            pause();
            _exit(0);
        }
    }

    void TearDown() override
    {
        if (victim_ > 0) {
            kill(victim_, SIGTERM);
            waitpid(victim_, nullptr, 0);
        }
        fs::remove_all(folder_);
    }

    void fake_ps(const std::string &script)
    {
        std::ofstream(folder_ + "/ps") << "#!/bin/sh\n" << script;
        fs::permissions(folder_ + "/ps", fs::perms::owner_all);
    }

    Outcome run(const std::string &command)
    {
        Transcript transcript;
        transcript.words = {command};
        PlayOptions options;
        options.zov = ZOV_PROGRAM;
        options.environment = {"PATH=" + folder_ + ":" + getenv("PATH")};
        Outcome outcome = play(transcript, options);
        EXPECT_EQ(outcome.complaint, "");
        EXPECT_EQ(outcome.out, "");
        EXPECT_TRUE(outcome.left_behind.empty());
        return outcome;
    }

    // The signal that ended the child, or 0 when it lives on.
    int victim_ended_by(bool must_wait)
    {
        int status = 0;
        if (waitpid(victim_, &status, must_wait ? 0 : WNOHANG) != victim_)
            return 0;
        victim_ = -1;
        return WTERMSIG(status);
    }

    std::string folder_;
    pid_t victim_ = -1;
};

} // namespace

TEST_F(ProcessControl, KillEndsTheFirstProcessThatIsTheController)
{
    for (const char *format : {"/usr/sbin/ac -d", "ac -d", "x\tac -d"}) {
        SCOPED_TRACE(format);
        if (victim_ < 0)
            start_victim();
        fake_ps("echo '  PID TTY      STAT   TIME COMMAND'\n"
                "echo '    1 ?        Ss     0:01 /sbin/init'\n"
                "echo '  /usr/sbin/ac without-a-number '\n"
                "printf '%s\\n' ' " +
                std::to_string(victim_) + " ?  Ss  0:00 " + format +
                "'\n"
                "echo ' 999999 ?  Ss  0:00 /usr/sbin/ac -d'\n");
        const Outcome outcome = run("kill");
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(victim_ended_by(true), SIGKILL);
    }
}

TEST_F(ProcessControl, KillLeavesOtherProcessesAlone)
{
    const std::string pid = std::to_string(victim_);
    for (const std::string line : {"/usr/sbin/ac", "/usr/sbin/acx -d", "mac -d", "trac -d"}) {
        fake_ps("echo ' " + pid + " ?  Ss  0:00 " + line + "'\n");
        EXPECT_EQ(run("kill").status, 0) << line;
        EXPECT_EQ(victim_ended_by(false), 0) << line;
    }
}

TEST_F(ProcessControl, KillReportsACommandThatFails)
{
    fake_ps("exit 3\n");
    Outcome outcome = run("kill");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(outcome.err.starts_with("ERROR: execute 'ps x > /tmp/zov.ps."));
    EXPECT_TRUE(outcome.err.ends_with("' error=768\n")) << outcome.err;

    fake_ps("rm \"$(readlink /proc/$$/fd/1)\"\n"); // the list itself
    outcome = run("kill");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(outcome.err.starts_with("open /tmp/zov.ps.") && outcome.err.ends_with(" failed\n"))
        << outcome.err;

    fake_ps("echo ' 99999999 ?  Ss  0:00 /usr/sbin/ac -d'\n"); // above the largest process id
    outcome = run("kill");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("ERROR: execute 'kill -9 99999999' error=256\n"), std::string::npos)
        << outcome.err;
}

TEST_F(ProcessControl, ExitEndsTheProcessOfThePidFile)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can write " << PID_FILE;
    // The file is the machine's: one test at a time, whichever build it is of.
    const int lock = open("/var/run", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    const std::string saved = folder_ + "/saved.pid";
    if (fs::exists(PID_FILE))
        fs::rename(PID_FILE, saved);

    std::ofstream(PID_FILE) << victim_ << '\n';
    EXPECT_EQ(run("exit").status, 0);
    EXPECT_EQ(victim_ended_by(true), SIGTERM);
    fs::remove(PID_FILE);
    EXPECT_EQ(run("exit").status, 1);
    close(lock);

    if (fs::exists(saved))
        fs::rename(saved, PID_FILE);
}
