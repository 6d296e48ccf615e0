// SPDX-License-Identifier: MIT
#include "course/requests.h"

#include <algorithm>
#include <new>

static constexpr uint32_t EVERYBODY =
    WTP_FILTER_MANAGED | WTP_FILTER_UNMANAGED | WTP_FILTER_UNJOINED;

MacList to_mac_list(const std::vector<Mac> &macs, size_t first, size_t count)
{
    MacList list;
    if (!list.reserve(count))
        throw std::bad_alloc();
    for (size_t i = first; i < first + count; i++)
        list.append() = macs[i];
    return list;
}

static void list(const Endpoint &endpoint, const MacList &macs, uint32_t filter, WtpPart part,
                 const TakeRecord &take)
{
    WtpList records;
    Connection(endpoint).fetch(records, EVERYBODY | filter, macs);
    for (const WtpRecord *wtp = first_wtp(records, part); wtp != nullptr; wtp = next_wtp(records))
        take(*wtp);
}

void list_devices(const Endpoint &endpoint, const std::vector<Mac> &macs, const TakeRecord &take)
{
    list(endpoint, to_mac_list(macs, 0, macs.size() > REQUEST_MAX ? 0 : macs.size()), 0,
         WtpPart::basics, take);
}

// A reply is held until the last of its records was taken.
static void list_whole(const Endpoint &endpoint, const std::vector<Mac> &macs, size_t most,
                       uint32_t filter, const TakeRecord &take)
{
    for (size_t first = 0; first < macs.size(); first += most)
        list(endpoint, to_mac_list(macs, first, std::min(most, macs.size() - first)), filter,
             WtpPart::whole, take);
}

void list_configurations(const Endpoint &endpoint, const std::vector<Mac> &macs,
                         const TakeRecord &take)
{
    enum : size_t { AT_A_TIME = 500 }; // some 10 MB
    list_whole(endpoint, macs, AT_A_TIME, WTP_FILTER_CFG, take);
}

Topology list_topology(const Endpoint &endpoint, const std::vector<Mac> &switches)
{
    Topology topology;
    list_whole(endpoint, switches, REQUEST_MAX, WTP_FILTER_DETAIL,
               [&](const WtpRecord &wtp) { topology.add(wtp); });
    return topology;
}
