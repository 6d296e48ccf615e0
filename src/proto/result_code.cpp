// SPDX-License-Identifier: MIT
#include "proto/result_code.h"

#include <cstdio>
#include <iterator>

// What stands before and after the device's MAC; without a second text the message names no device.
struct ResultMessage {
    const char *before;
    const char *after;
};

static constexpr ResultMessage FAILED = {"Operation failed.", nullptr};

static constexpr ResultMessage MESSAGES[] = {
    {nullptr, nullptr}, // success
    FAILED,
    {"AC is out of memory.", nullptr},
    {"Invalid argument.", nullptr},
    FAILED,
    {"Device ", " has no available image."},
    {"Device ", " was not found."},
    {"Reach the maximum number of managed Devices.", nullptr},
    {"Device ", " is already managed."},
    {"Device ", " is not managed."},
    {"Device ", " is busy."},
    {"Device ", " failed to do this operation."},
    {"No response from device ", "."},
    {"Device ", " doesn't support this operation."},
    {"Device ", " denied this operation."},
    {"Device ", " is out of memory."},
    {"Device ", " got an invalid argument."},
    {"Device ", " is not ready."},
    {"Could not support this operation with the firmware version of device ", "."},
    {"Incorrect configuration for device ", "."},
    {"Device ", " has aborted the operation."},
};

const char *result_text(uint8_t code, const Mac &mac)
{
    static char text[128];
    const ResultMessage &message = code < std::size(MESSAGES) ? MESSAGES[code] : FAILED;
    if (message.before == nullptr || message.after == nullptr)
        return message.before;
    char name[MAC_TEXT_MAX + 1];
    *write_mac_lower(name, mac) = '\0';
    snprintf(text, sizeof text, "%s%s%s", message.before, name, message.after);
    return text;
}

void print_result_code(uint8_t code, const Mac &mac, const Messages &messages)
{
    if (const char *text = result_text(code, mac))
        messages.report("ERROR: %s\n", text);
}
