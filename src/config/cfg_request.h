// SPDX-License-Identifier: MIT
// The three requests of zov cfg. Each returns 0 when every device answered 0, else 1 with the
// messages reported.
#pragma once

#include "config/config_keys.h"
#include "config/tlv_buffer.h"
#include "proto/requests.h"
#include "proto/session.h"

// Puts devices under management, with the items (a static IP setting, or none): a request for each
// device, which one result byte answers. Ends at the device for which the controller has no room
// left.
int cfg_request_add(AcSession &session, Macs wtps, const TlvBuffer &items);

// Takes devices out of management: a request for each device, which one result byte answers.
int cfg_request_delete(AcSession &session, Macs wtps);

// Sends configurations: the i-th list of items for the i-th device, or one list for all.
//
//     reply     for each device: 1 result byte, 1 length M, M message
int cfg_request_set(AcSession &session, const SetConfigRequest &request);
