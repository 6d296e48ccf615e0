// SPDX-License-Identifier: MIT
// The file that gets a line for each event of a roll-out: its time (RFC 3339, UTC) and its text.
#pragma once

#include <string>

class EventLog {
public:
    // Null: no file. Lines are added behind those that are there. Throws Failure when the file
    // cannot be opened, and later when a line cannot be written.
    explicit EventLog(const char *path);
    EventLog(const EventLog &) = delete;
    EventLog &operator=(const EventLog &) = delete;
    ~EventLog();

    void add(const std::string &text) const;

private:
    std::string path_;
    int fd_ = -1;
};
