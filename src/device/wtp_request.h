// SPDX-License-Identifier: MIT
// The device list request, which every reporting command uses.
//
//     request   1 command code 1
//               4 filter, WtpFilter bits
//               2 count N of addresses, 0: all devices
//             6*N addresses
//     reply     1 marker: 0 a record follows, then the next marker; else the end of the list
//               . the record, see wtp_layout.h
#pragma once

#include "device/wtp_record.h"
#include "proto/reply_reader.h"
#include "proto/session.h"
#include "util/mac.h"

#include <cstdint>

enum WtpFilter : uint32_t {
    WTP_FILTER_MANAGED = 1,
    WTP_FILTER_UNMANAGED = 2,
    WTP_FILTER_UNJOINED = 4, // include devices that have not joined
    WTP_FILTER_CFG = 8,      // include the configuration
    WTP_FILTER_DETAIL = 16,  // include radios, ports and neighbours
    WTP_FILTER_STAINF = 32,  // include stations
    WTP_FILTER_ALL = 63,
};

// Reads one record, whose texts and tables are made in `memory`, into a fresh `record`. Returns 0;
// or 1, with the message (if the failure has one) printed.
int read_wtp_record(ReplyReader &reply, Arena &memory, WtpRecord &record);

// Reads the reply into the empty `list`. Returns 0; or 1, with the list empty and the message (if
// the failure has one) printed.
int read_wtp_list(ByteSource &source, WtpList &list);

// Sends the request and reads the reply, with the same result.
int fetch_wtp_list(AcSession &session, WtpList &list, uint32_t filter, const MacList &macs);
