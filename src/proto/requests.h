// SPDX-License-Identifier: MIT
// The requests of the protocol: for each its code, how its length is sent, and its fields.
//
// A request is its code (1 byte), the length of what follows (if it has one) and its fields, which
// visit() hands to a visitor in wire order. Their types say how they are encoded:
//
//     integers         big-endian; bool: one byte, 0 or 1
//     Mac              6 bytes
//     Macs             a 16-bit count and the addresses
//     MacCount, MacAddresses   the two parts of it
//     Counted<Int>     a count of bytes, of the type Int, and the bytes
//     Rest             bytes up to the end of the request
//
// RequestWriter sends them; the simulated controller reads them.
#pragma once

#include "util/mac.h"

#include <cstdint>
#include <span>
#include <string_view>

enum : uint8_t { GOODBYE = 0 }; // the code that ends a session, without fields and answer

enum class LengthKind : uint8_t { none, u16, u16_low_bits, u32 };

using Macs = std::span<const Mac>;

struct MacCount {
    Macs &macs;
};

struct MacAddresses {
    Macs &macs;
};

template <class Int> struct Counted {
    std::string_view bytes;
};

struct Rest {
    std::string_view bytes;
};

// What begins each structure below.
#define REQUEST(code, length)                                                                      \
    static constexpr uint8_t CODE = code;                                                          \
    static constexpr LengthKind LENGTH = LengthKind::length;

// What ends it.
#define FIELDS(...)                                                                                \
    template <class Wire> void visit(Wire &wire)                                                   \
    {                                                                                              \
        wire(__VA_ARGS__);                                                                         \
    }

// The device list: see wtp_list.h. No addresses: all devices.
struct WtpListRequest {
    REQUEST(1, none)
    uint32_t filter; // WtpFilter bits
    Macs wtps;
    FIELDS(filter, wtps)
};

struct UpgradeRequest {
    REQUEST(2, u16)
    Macs wtps;
    uint32_t period; // seconds that a device may be offline
    uint32_t type;
    FIELDS(MacCount{wtps}, period, type, MacAddresses{wtps})
};

struct AddRequest {
    REQUEST(3, none)
    Mac wtp;
    Counted<uint16_t> items; // none, or one with its addresses
    FIELDS(wtp, items)
};

struct DeleteRequest {
    REQUEST(4, none)
    Mac wtp;
    FIELDS(wtp)
};

struct SetConfigRequest {
    REQUEST(5, u32)
    Macs wtps;
    uint8_t kind;  // a DeviceKind
    uint32_t wait; // seconds before a device applies it
    bool several;  // a list for each device, instead of one for all
    Rest lists;    // of items, see tlv_buffer.h
    FIELDS(wtps, kind, wait, several, lists)
};

struct ResetRequest {
    REQUEST(6, u16)
    bool factory;
    bool flick_reboot;
    uint32_t wait; // seconds before the reset
    Macs wtps;
    FIELDS(factory, flick_reboot, wait, wtps)
};

struct AcInfoRequest {
    REQUEST(7, none)
    FIELDS()
};

struct AcMemoryRequest {
    REQUEST(8, none)
    FIELDS()
};

struct FirmwareStateRequest {
    REQUEST(9, none)
    uint32_t state;
    FIELDS(state)
};

struct ScanRequest {
    REQUEST(10, u16)
    uint8_t band;
    Macs wtps;
    FIELDS(band, wtps)
};

// What the controller repeats on all devices: site surveys, choosing channels, choosing power.
template <uint8_t code> struct PeriodicRequest {
    REQUEST(code, u16)
    uint32_t band;
    bool enable;
    uint32_t period; // seconds
    FIELDS(band, enable, period)
};
using BackgroundScanRequest = PeriodicRequest<11>;
using AutoChannelRequest = PeriodicRequest<12>;
using AutoTxPowerRequest = PeriodicRequest<13>;

struct KickRequest {
    REQUEST(14, u16)
    uint8_t band;
    uint8_t wlan; // from 1
    Macs stations;
    Macs wtps;
    FIELDS(band, wlan, stations, wtps)
};

struct DebugRequest {
    REQUEST(15, none)
    uint32_t enable; // 0 or 1
    uint32_t wtp;    // 1: of devices, 0: of the controller
    Mac mac;         // zero: all
    FIELDS(enable, wtp, mac)
};

struct NoDiscoveryRequest {
    REQUEST(16, none)
    uint32_t on; // 0
    FIELDS(on)
};

struct RedirectRequest {
    REQUEST(17, u16)
    Macs wtps;
    Counted<uint8_t> address; // or host name
    FIELDS(wtps, address)
};

struct ShellRequest {
    REQUEST(18, u16_low_bits)
    Macs wtps;
    uint8_t type;     // of output, 0: all, 1: standard output, 2: standard error
    uint32_t timeout; // seconds
    Counted<uint16_t> command;
    FIELDS(wtps, type, timeout, command)
};

struct FirmwareListRequest {
    REQUEST(19, u16)
    Macs wtps;
    FIELDS(wtps)
};

#undef REQUEST
#undef FIELDS

// All of them, with the names that the simulated controller logs.
#define ALL_REQUESTS(REQUEST)                                                                      \
    REQUEST(WtpListRequest, "list")                                                                \
    REQUEST(UpgradeRequest, "upgrade")                                                             \
    REQUEST(AddRequest, "add")                                                                     \
    REQUEST(DeleteRequest, "delete")                                                               \
    REQUEST(SetConfigRequest, "set configuration")                                                 \
    REQUEST(ResetRequest, "reset")                                                                 \
    REQUEST(AcInfoRequest, "controller information")                                               \
    REQUEST(AcMemoryRequest, "controller memory")                                                  \
    REQUEST(FirmwareStateRequest, "firmware state")                                                \
    REQUEST(ScanRequest, "site survey")                                                            \
    REQUEST(BackgroundScanRequest, "background survey")                                            \
    REQUEST(AutoChannelRequest, "automatic channel")                                               \
    REQUEST(AutoTxPowerRequest, "automatic power")                                                 \
    REQUEST(KickRequest, "kick")                                                                   \
    REQUEST(DebugRequest, "debug")                                                                 \
    REQUEST(NoDiscoveryRequest, "no discovery")                                                    \
    REQUEST(RedirectRequest, "redirect")                                                           \
    REQUEST(ShellRequest, "shell")                                                                 \
    REQUEST(FirmwareListRequest, "firmware list")
