// SPDX-License-Identifier: MIT
// The device list request, which every reporting command uses.
//
//     reply     1 marker: 0 a record follows, then the next marker; else the end of the list
//               . the record, see wtp_layout.h
//
// The reply is held as it came, after a first pass has found it whole and has seen how much memory
// the largest record needs. A walk over the list then makes one record after the other, in the same
// memory: nothing can fail any more once the first is there.
#pragma once

#include "device/wtp_record.h"
#include "proto/session.h"
#include "util/block.h"
#include "util/bytes.h"
#include "util/mac.h"
#include "util/page_buffer.h"

#include <cstddef>
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

// Whether a device is flagged for an upgrade or in the middle of one.
inline bool is_upgrading(const WtpRecord &wtp)
{
    return wtp.upg_img != 0 || wtp.sub_state == WTP_SUB_UPGRADING;
}

// How much of each record a walk reads: the members that every device has up to its memory, or all.
enum class WtpPart { basics, whole };

// Devices in the order in which the controller sent them.
struct WtpList {
    PageBuffer reply; // as it came
    Block memory;     // of the record that the walk is at, and its tables
    Bytes starts;     // where each record begins, a size_t each
    size_t next = 0;  // the walk's place among them
    WtpPart part = WtpPart::whole;
};

// Receives the reply into the empty `list`. Returns 0; or 1, with the list empty and the message
// (if the failure has one) printed.
int receive_wtp_list(ByteSource &source, WtpList &list);

// Sends the request and receives the reply, with the same result.
int fetch_wtp_list(AcSession &session, WtpList &list, uint32_t filter, const MacList &macs);

// The walk: the first device, and then the next one, or null behind the last. A record is valid
// until the next step; its texts are those of the reply.
const WtpRecord *first_wtp(WtpList &list, WtpPart part);
const WtpRecord *next_wtp(WtpList &list);

// Releases the reply and leaves the list empty.
void free_wtp_list(WtpList &list);
