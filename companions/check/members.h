// SPDX-License-Identifier: MIT
// The check that zov cfg does without: whether the members of a file are settings, stand where they
// belong and are there once.
#pragma once

#include "check/diagnostics.h"
#include "common/settings_tree.h"

// The settings of a kind of device, and those of the other kind for the messages.
struct KnownMembers {
    explicit KnownMembers(DeviceKind of);

    DeviceKind kind;
    SettingNode root;
};

void check_members(const KnownMembers &known, const json_value &root, Diagnostics &diagnostics);
