// SPDX-License-Identifier: MIT
// Writes replies: integers in network order, and device records by their layout.
#pragma once

#include "device/wtp_layout.h"
#include "device/wtp_list.h"
#include "util/byte_order.h"

#include <string>
#include <type_traits>

template <class Field> void put(std::string &reply, const Field &field)
{
    if constexpr (std::is_integral_v<Field>) {
        char wire[sizeof field];
        to_big_endian(wire, field);
        reply.append(wire, sizeof wire);
    } else {
        static_assert(std::is_trivially_copyable_v<Field> && alignof(Field) == 1);
        reply.append(reinterpret_cast<const char *>(&field), sizeof field);
    }
}

// Text behind its length; cut to what the length can tell.
inline void put_text(std::string &reply, std::string_view text)
{
    text = text.substr(0, UINT16_MAX);
    put(reply, static_cast<uint16_t>(text.size()));
    reply += text;
}

// The visitor of wtp_layout.h that writes a record, with the sections that a filter asks for.
class RecordWriter {
public:
    RecordWriter(std::string &reply, uint32_t filter) : reply_(reply), filter_(filter) {}

    void write(WtpRecord &wtp)
    {
        has_configuration_ = wtp.wtp_cfg != nullptr;
        visit_fields(*this, wtp);
    }

    template <class Field> void operator()(const char *, const Field &field) { put(reply_, field); }
    void operator()(const char *, std::string_view text) { put_text(reply_, text); }
    void hostname(const char *, std::string_view text) { put_text(reply_, text); }

    bool present(Section section)
    {
        const bool wanted = (filter_ & bit(section)) != 0 &&
                            (section != Section::configuration || has_configuration_);
        put(reply_, static_cast<uint8_t>(wanted));
        return wanted;
    }
    bool make(const WtpCfg *) { return true; }

    template <class Int, class Row>
    Int count(const char *, const ArrayView<Row> &table, CountOf<Int>)
    {
        const auto rows = static_cast<Int>(table.size());
        put(reply_, rows);
        return rows;
    }
    template <class Int, class Row>
    void rows(const char *name, ArrayView<Row> &table, CountOf<Int> width)
    {
        counted_rows(name, table, static_cast<uint32_t>(count(name, table, width)));
    }
    template <class Row> void counted_rows(const char *, ArrayView<Row> &table, uint32_t)
    {
        for (Row &row : table)
            visit_fields(*this, row);
    }

private:
    static uint32_t bit(Section section)
    {
        switch (section) {
        case Section::detail:
            return WTP_FILTER_DETAIL;
        case Section::stations:
            return WTP_FILTER_STAINF;
        case Section::configuration:
            break;
        }
        return WTP_FILTER_CFG;
    }

    std::string &reply_;
    uint32_t filter_;
    bool has_configuration_ = false;
};
