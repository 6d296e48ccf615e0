// SPDX-License-Identifier: MIT
#include "event_log.h"

#include "failure.h"

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

enum : mode_t { MODE_NEW = 0666 };

EventLog::EventLog(const char *path)
{
    if (path == nullptr)
        return;
    path_ = path;
    fd_ = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, MODE_NEW);
    if (fd_ < 0)
        throw Failure(with_reason("cannot open " + path_, errno));
}

EventLog::~EventLog()
{
    if (fd_ >= 0)
        close(fd_);
}

void EventLog::add(const std::string &text) const
{
    if (fd_ < 0)
        return;
    const time_t now = time(nullptr);
    tm parts = {};
    char stamp[sizeof "2026-11-25T01:02:03Z "];
    strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%SZ ", gmtime_r(&now, &parts));
    const std::string line = stamp + text + "\n";
    for (std::string_view rest = line; !rest.empty();) {
        const ssize_t written = write(fd_, rest.data(), rest.size());
        if (written > 0)
            rest.remove_prefix(static_cast<size_t>(written));
        else if (errno != EINTR)
            throw Failure(with_reason("cannot write " + path_, errno));
    }
}
