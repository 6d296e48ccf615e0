// SPDX-License-Identifier: MIT
// The controller's result byte for one device.
#pragma once

#include "util/mac.h"
#include "util/messages.h"

#include <cstdint>

// Those that a program has to name; print_result_code knows more.
enum ResultCode : uint8_t {
    RESULT_SUCCESS = 0,
    RESULT_INVALID_ARGUMENT = 3,
    RESULT_NO_IMAGE = 5,
    RESULT_NOT_FOUND = 6,
    RESULT_TOO_MANY_DEVICES = 7,
    RESULT_ALREADY_MANAGED = 8,
    RESULT_NOT_MANAGED = 9,
    RESULT_BUSY = 10,
    RESULT_NO_RESPONSE = 12,
    RESULT_NOT_SUPPORTED = 13,
    RESULT_NOT_READY = 17,
    RESULT_BAD_CONFIGURATION = 19,
};

// The code's text, or null for success; texts about a device name it by its MAC in lower case.
// Valid until the next call.
const char *result_text(uint8_t code, const Mac &mac);

// Reports the text, if there is one.
void print_result_code(uint8_t code, const Mac &mac, const Messages &messages);
