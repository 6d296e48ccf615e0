// SPDX-License-Identifier: MIT
#include "rollout/event_log.h"

#include "common/failure.h"

#include <ctime>

EventLog::EventLog(const char *path)
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
    const std::string line = stamp + text + "\n";
    if (const int error = write_all(fd_, line); error != 0)
        throw Failure(with_reason("cannot write " + path_, error));
}
