// SPDX-License-Identifier: MIT
// One program at a time changes the devices of a controller.
#pragma once

#include "common/connection.h"
#include "common/trusted_files.h"

// Held as long as it lives, by flock(2) on the file zov-ADDRESS-PORT in /run/lock; in
// XDG_RUNTIME_DIR where that cannot be used. Throws Failure when another process has it, and when
// there is no such file and none can be made. The file stays.
class ControllerLock {
public:
    explicit ControllerLock(const Endpoint &endpoint);

private:
    Descriptor file_;
};
