// SPDX-License-Identifier: MIT
// Command codes: the first byte of every message that the client sends.
#pragma once

#include <cstdint>

enum CommandCode : uint8_t {
    COMMAND_GOODBYE = 0,
    COMMAND_WTP_LIST = 1,
    COMMAND_UPGRADE = 2,
    COMMAND_ADD = 3,
    COMMAND_DELETE = 4,
    COMMAND_SET_CONFIG = 5,
    COMMAND_RESET = 6,
    COMMAND_AC_INFO = 7,
    COMMAND_AC_MEMORY = 8,
    COMMAND_FIRMWARE_STATE = 9,
    COMMAND_SCAN = 10,
    COMMAND_BACKGROUND_SCAN = 11,
    COMMAND_AUTO_CHANNEL = 12,
    COMMAND_AUTO_TX_POWER = 13,
    COMMAND_KICK = 14,
    COMMAND_DEBUG = 15,
    COMMAND_NO_DISCOVERY = 16,
    COMMAND_REDIRECT = 17,
    COMMAND_SHELL = 18,
    COMMAND_FIRMWARE_LIST = 19,
};
