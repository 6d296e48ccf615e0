// SPDX-License-Identifier: MIT
// The three requests of zov cfg. Each returns 0 when every device answered 0, else 1 with the
// messages printed.
#pragma once

#include "config/config_keys.h"
#include "config/tlv_buffer.h"
#include "proto/session.h"
#include "util/mac.h"
#include "util/table.h"

// Puts devices under management, with the items (a static IP setting, or none). Ends at the device
// for which the controller has no room left.
//
//     for each device
//     request   1 command code 3
//               6 device
//               2 length L
//               L items
//     reply     1 result byte
int cfg_request_add(AcSession &session, const MacList &wtps, const TlvBuffer &items);

// Takes devices out of management.
//
//     for each device
//     request   1 command code 4
//               6 device
//     reply     1 result byte
int cfg_request_delete(AcSession &session, const MacList &wtps);

// Sends configurations: with `several`, the i-th list of items for the i-th device; without, the
// one list for all. `wait`: seconds that the devices wait before they apply it.
//
//     request   1 command code 5
//               4 length of what follows
//               2 count N of devices
//             6*N devices
//               1 device kind
//               4 wait
//               1 several
//               . the lists, each its items and 2 bytes 0
//     reply     for each device: 1 result byte, 1 length M, M message
int cfg_request_set(AcSession &session, const MacList &wtps, DeviceKind kind, int wait,
                    bool several, const Table<TlvBuffer> &lists);
