// SPDX-License-Identifier: MIT
// Checks one configuration file after the other: zov's own checks by zov's own functions, and those
// of members.
#pragma once

#include "common/stored_message.h"
#include "config/config_file.h"
#include "documents/diagnostics.h"
#include "documents/items.h"
#include "documents/members.h"

// The kind of device that the comment of an exported configuration names, or 0.
uint8_t kind_in_document(const json_value &root);

class Checker {
public:
    // `strict` makes errors of warnings. With `keeps_items` what would be sent can be had; without,
    // no digest of a password is made, which costs a process.
    Checker(bool strict, bool keeps_items) : strict_(strict), keeps_items_(keeps_items) {}

    // Reads and parses a file; the name "-" is that of standard input. Null when it cannot be read
    // or is no JSON.
    const json_value *open(const char *name);

    // The same of a text, which `name` calls for messages.
    const json_value *open_text(const std::string &name, std::string_view text);

    // Checks what was opened as a file for a kind of device.
    void check(DeviceKind kind);

    // What is wrong with the file, in its order. To be called once, as the last.
    std::vector<Diagnostic> take_diagnostics();

    // What the last check() made; of a file with errors nothing.
    const TlvBuffer &buffer() const { return buffer_; }
    const std::vector<SentItem> &items() const { return items_; }

private:
    struct Walk;

    void begin(const char *name);
    const json_value *parse(const char *path);

    bool strict_, keeps_items_;
    KnownMembers access_points_{DEVICE_ACCESS_POINT}, switches_{DEVICE_SWITCH};
    std::string name_;
    Bytes text_;
    JsonTree root_{nullptr, json_value_free};
    Diagnostics diagnostics_{false};
    StoredMessage message_; // what zov would print
    TlvBuffer buffer_;
    std::vector<SentItem> items_;
};
