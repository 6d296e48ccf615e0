// SPDX-License-Identifier: MIT
// A device of a kind with rows in every table, for taking down what reports have of it.
#pragma once

#include "device/wtp_layout.h"

#include <memory_resource>

// The visitor of wtp_layout.h that fills one. It is as old as its records.
class SampleRecord {
public:
    // Without rows, tables stay empty; without configuration there is none.
    SampleRecord(uint8_t wtp_type, bool rows, bool configuration)
        : with_rows_(rows), with_configuration_(configuration)
    {
        record_.wtp_type = wtp_type;
        visit_fields(*this, record_);
    }

    const WtpRecord &record() const { return record_; }

    template <class Field> void operator()(const char *, Field &) {}
    void hostname(const char *, std::string_view &) {}

    bool present(Section section)
    {
        return section != Section::configuration || with_configuration_;
    }
    bool make(WtpCfg *&part)
    {
        part = std::pmr::polymorphic_allocator<>(&memory_).new_object<WtpCfg>();
        return true;
    }

    template <class Int, class Row> uint32_t count(const char *, ArrayView<Row> &, CountOf<Int>)
    {
        return with_rows_;
    }
    template <class Row> void counted_rows(const char *, ArrayView<Row> &table, uint32_t count)
    {
        table = ArrayView<Row>(memory_.allocate((count + 1) * sizeof(Row), alignof(Row)));
        for (uint32_t i = 0; i < count; i++) {
            Row &row = table.append();
            visit_fields(*this, row);
            choose(row, i);
        }
    }
    template <class Int, class Row> void rows(const char *name, ArrayView<Row> &table, CountOf<Int>)
    {
        counted_rows(name, table, with_rows_ ? rows_of(table) : 0);
    }

private:
    static constexpr uint32_t MODES[] = {SECURITY_OPEN, SECURITY_WEP, SECURITY_PSK,
                                         SECURITY_ENTERPRISE};

    template <class Row> static uint32_t rows_of(const ArrayView<Row> &) { return 1; }
    static uint32_t rows_of(const ArrayView<WlanCfg> &) { return std::size(MODES); }

    // A WLAN for each sort of security mode.
    template <class Row> void choose(Row &, uint32_t) {}
    void choose(WlanCfg &wlan, uint32_t number) { wlan.sec_mode = MODES[number]; }

    bool with_rows_, with_configuration_;
    std::pmr::monotonic_buffer_resource memory_;
    WtpRecord record_;
};
