// SPDX-License-Identifier: MIT
// What visits the fields of a device record in their wire order.
#pragma once

#include "device/wtp_record.h"

#include <concepts>
#include <cstdint>

// What a reply may leave out.
enum class Section { detail, stations, configuration };

// The integer that a table's count is on the wire.
template <class Int> struct CountOf {
};
inline constexpr CountOf<uint8_t> COUNT_U8;
inline constexpr CountOf<uint16_t> COUNT_U16;
inline constexpr CountOf<uint32_t> COUNT_U32;
inline constexpr CountOf<int32_t> COUNT_I32; // negative: no rows

// A visitor is handed the fields of a structure in wire order, each with its name:
//
//     wire(name, field)               one field; its type says how it is encoded
//     wire.hostname(name, text)       a text that comes from a station
//     wire.rows(name, table, COUNT)   a table behind its count
//     wire.count(name, table, COUNT)  a table's count alone; gives the count, for
//     wire.counted_rows(name, table, count)
//     wire.present(section)           a byte that says whether the section follows; gives that
//     wire.make(part)                 a part that is there only if its section is; gives whether it
//     is
//
// zov visits records to check and to read them, a controller to write them, and there are visitors
// that look for one field by its name. A visitor that only ever sees configurations need not have
// hostname, count, counted_rows, present and make.
template <class Wire>
concept ConfigVisitor = requires(Wire wire, uint32_t number, std::string_view text, Ipv4 addr,
                                 ArrayView<Mac> table)
{
    wire("name", number);
    wire("name", text);
    wire("name", addr);
    wire.rows("name", table, COUNT_U32);
};

template <class Wire>
concept RecordVisitor = ConfigVisitor<Wire> &&
    requires(Wire wire, std::string_view text, ArrayView<SwitchHwPort> table, WtpCfg *part)
{
    wire.hostname("name", text);
    {
        wire.count("name", table, COUNT_U32)
        } -> std::same_as<uint32_t>;
    wire.counted_rows("name", table, uint32_t{1});
    {
        wire.present(Section::detail)
        } -> std::same_as<bool>;
    {
        wire.make(part)
        } -> std::same_as<bool>;
};
