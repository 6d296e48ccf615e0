// SPDX-License-Identifier: MIT
// Temporary files with predictable names, and the password digest that goes through them.
#include "config/password_digest.h"
#include "report/format.h"
#include "util/temp_file.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

// The digest as text; or the message, after a failure.
static std::string digest_of(const std::string &password)
{
    Md5Digest digest;
    char text[DIGEST_TEXT_MAX];
    testing::internal::CaptureStderr();
    const int status = password_digest(password.c_str(), digest.byte, {});
    const std::string message = testing::internal::GetCapturedStderr();
    return status == 0 ? std::string(text, write_digest(text, digest)) : message;
}

class TempFiles : public testing::Test {
protected:
    TempFiles()
    {
        char folder[] = "/tmp/zov-unit.XXXXXX", pid[16];
        snprintf(pid, sizeof pid, "%x", static_cast<unsigned>(getpid()));
        names_[0] = std::string("/tmp/zov.") + pid + ".pwd.tmp";
        names_[1] = std::string("/tmp/zov.") + pid + ".md5.tmp";
        folder_ = mkdtemp(folder);
        victim_ = folder_ + "/victim";
        const std::ofstream empty(victim_);
    }

    ~TempFiles() override
    {
        EXPECT_FALSE(fs::remove(names_[0]) || fs::remove(names_[1])) << "a file was left behind";
        EXPECT_EQ(fs::file_size(victim_), 0u);
        fs::remove_all(folder_);
    }

    // Removes what was moved aside from a name; how much that was.
    static unsigned remove_moved(const std::string &name)
    {
        unsigned count = 0;
        for (const fs::directory_entry &one : fs::directory_iterator("/tmp"))
            if (one.path().string().starts_with(name + ".")) {
                fs::remove_all(one.path());
                count++;
            }
        return count;
    }

    std::string folder_, victim_, names_[2];
};

TEST_F(TempFiles, DigestsWhateverHasTheNames)
{
    // Computed with Python: hashlib.md5(password + b"\n").hexdigest().
    const std::string cases[][2] = {
        {"it's $HOME `id` \"x\"", "8d3c2cd00eada4249750294360e5eba7"},
        {"\\n\\\\ %s;|&<>", "0f5b88042b898ee8fee844e2bf6b9e83"},
        {"-n", "66306084bf4c5d085369d7c20346fbee"},
        {"\xc3\xa9\xff\x80\x01", "656ab8f5add4dbc5f37ee3bf0f0d25c4"},
        {std::string(255, '\''), "292db1154bb8dcf0ca0c725ebac3f1ae"},
    };
    for (const auto &[password, digest] : cases)
        for (const std::string &name : names_) {
            EXPECT_EQ(digest_of(password), digest);
            std::ofstream(name) << std::string(1000, 'x');
            EXPECT_EQ(digest_of(password), digest);
            fs::create_symlink(victim_, name);
            EXPECT_EQ(digest_of(password), digest);
            fs::create_directories(name + "/not-empty"); // of another user, to be in the way
            EXPECT_EQ(digest_of(password), digest);
            EXPECT_EQ(remove_moved(name), 1u);
        }
}

TEST_F(TempFiles, FoldersThatCannotBeMoved)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can play another user";
    for (const std::string &name : names_) {
        fs::create_directory(name);
        EXPECT_EQ(seteuid(65534), 0); // /tmp lets nobody else move it
        EXPECT_EQ(digest_of("secret"), "ERROR: create '" + name + "' failed.\n");
        EXPECT_EQ(seteuid(0), 0);
        EXPECT_TRUE(fs::remove(name));
        EXPECT_EQ(remove_moved(name), 0u);
    }
}

TEST_F(TempFiles, FailingMd5sum)
{
    const std::string path = getenv("PATH"), command = "md5sum " + names_[0] + " > " + names_[1];
    const std::string cases[][2] = {
        {"exit 1", "ERROR: execute '" + command + "' error=256\n"},
        {"echo 0123456789abcdef0123456789abcd", "ERROR: read '" + names_[1] + "' failed.\n"},
    };
    setenv("PATH", folder_.c_str(), 1);
    for (const auto &[script, message] : cases) {
        std::ofstream(folder_ + "/md5sum") << "#!/bin/sh\n" << script << "\n";
        fs::permissions(folder_ + "/md5sum", fs::perms::owner_all);
        EXPECT_EQ(digest_of("secret"), message);
    }
    setenv("PATH", path.c_str(), 1);
}

TEST_F(TempFiles, AreOursAlone)
{
    const mode_t before = umask(0);
    TempFile file(names_[0].c_str());
    umask(before);
    struct stat state = {};
    ASSERT_TRUE(file.created() && stat(file.path(), &state) == 0);
    EXPECT_EQ(state.st_mode, mode_t{S_IFREG | 0600});
    fs::remove(names_[0]); // somebody puts a link in its place
    fs::create_symlink(victim_, names_[0]);
    EXPECT_FALSE(file.write("secret", 6));
}
