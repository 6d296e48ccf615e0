// SPDX-License-Identifier: MIT
#include "course/event_log.h"

#include "common/failure.h"
#include "common/plain_text.h"
#include "common/stop.h"

#include <algorithm>
#include <ctime>
#include <pwd.h>
#include <unistd.h>

EventLog::EventLog(const char *path, const char *program)
    : sender_(std::string(program) + "[" + std::to_string(getpid()) + "]: ")
{
    if (path == nullptr)
        return;
    path_ = path;
    fd_ = inherited_descriptor(path);
    if (fd_ >= 0)
        return;
    own_ = open_log(path);
    fd_ = own_.get();
}

void EventLog::add(const std::string &text) const
{
    if (fd_ < 0)
        return;
    const time_t now = time(nullptr);
    tm parts = {};
    char stamp[sizeof "2026-11-25T01:02:03Z "];
    strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%SZ ", gmtime_r(&now, &parts));
    const std::string line = stamp + sender_ + text + "\n";
    if (const int error = write_or_stop(fd_, line); error != 0)
        throw Failure(with_reason("cannot write " + path_, error));
}

std::string shell_word(const std::string &word)
{
    const bool plain = !word.empty() && std::all_of(word.begin(), word.end(), [](char c) {
        return isalnum(static_cast<unsigned char>(c)) != 0 ||
               std::string_view("_-+=:,./@%").find(c) != std::string_view::npos;
    });
    if (plain)
        return word;
    std::string quoted = "'";
    for (const char c : word)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

std::string opening_text(const char *program, std::span<const std::string> words)
{
    const passwd *user = getpwuid(getuid());
    std::string text = std::string(program) + " " ZOV_VERSION ", user " +
                       (user != nullptr ? user->pw_name : std::to_string(getuid())) + ", process " +
                       std::to_string(getpid()) + ":";
    for (const std::string &word : words)
        text += " " + plain_text(shell_word(word));
    return text;
}
