// SPDX-License-Identifier: MIT
#include "device/wtp_list.h"

#include "device/wtp_layout.h"
#include "proto/request_writer.h"
#include "util/byte_order.h"
#include "util/sizes.h"

#include <cstring>
#include <new>
#include <string_view>

namespace {

// How much of a record's memory an object or a table takes.
constexpr size_t in_memory(size_t size)
{
    return sum_of_sizes(size, alignof(std::max_align_t) - 1) & ~(alignof(std::max_align_t) - 1);
}

// What both passes do about counts: a `number<Int>()` of theirs gives the next one.
template <class Pass> class CountReader {
public:
    template <class Int, class Row> Int count(const char *, const ArrayView<Row> &, CountOf<Int>)
    {
        return pass().template number<Int>();
    }

    template <class Int, class Row> void rows(const char *name, ArrayView<Row> &table, CountOf<Int>)
    {
        const auto announced = pass().template number<Int>();
        if (announced > 0)
            pass().counted_rows(name, table, static_cast<uint32_t>(announced));
    }

private:
    Pass &pass() { return static_cast<Pass &>(*this); }
};

// The first pass, which receives the reply as far as it needs it: a visitor of wtp_layout.h that
// passes over the fields. It looks at the bytes only where they decide what follows, so that the
// fields between are one addition.
class ReplyChecker : public CountReader<ReplyChecker> {
public:
    ReplyChecker(ByteSource &source, WtpList &list) : source_(source), list_(list) {}

    bool ok() const { return !failed_; }

    // The marker before the next record, or before the end.
    uint8_t marker() { return number<uint8_t>(); }

    // One record; where it begins is noted in the list.
    void check(WtpRecord &record)
    {
        needed_ = 0;
        if (!list_.starts.append(&at_, sizeof at_) || !need(sizeof record))
            report_no_memory("ERROR: Out of memory\n");
        visit_fields(*this, record);
        reach();
    }

    template <class Field> void operator()(const char *, Field &) { at_ += sizeof(Field); }
    void operator()(const char *, uint8_t &field) { field = number<uint8_t>(); }
    void operator()(const char *, std::string_view &) { at_ += number<uint16_t>(); }
    void hostname(const char *name, std::string_view &text) { (*this)(name, text); }

    bool present(Section) { return number<uint8_t>() != 0; }

    bool make(WtpCfg *&part)
    {
        part = &cfg_;
        if (!need(sizeof cfg_))
            report_no_memory("ERROR: Out of memory\n");
        return ok();
    }

    template <class Row> void counted_rows(const char *, ArrayView<Row> &table, uint32_t announced)
    {
        if (announced == 0 || failed_)
            return;
        if (announced > INT32_MAX || !need(product_of_sizes(announced, sizeof(Row)))) {
            table_too_large(table, announced);
            return;
        }
        Row row;
        for (uint32_t i = 0; i < announced && ok(); i++) {
            visit_fields(*this, row);
            reach();
        }
    }

    template <class Int> Int number()
    {
        at_ += sizeof(Int);
        return reach() ? from_big_endian<Int>(bytes_ + at_ - sizeof(Int)) : Int{0};
    }

private:
    // Makes sure that what was passed over is there.
    bool reach() { return at_ <= size_ || receive(); }

    // Receives on until it is there. The bytes go straight to their place.
    [[gnu::noinline]] bool receive()
    {
        enum : size_t { PIECE = size_t{512} << 10 };
        while (at_ > size_ && !failed_) {
            uint8_t *to = list_.reply.prepare(PIECE);
            if (to == nullptr) {
                report_no_memory("ERROR: Out of memory\n");
                break;
            }
            const ssize_t got = recv_some(source_, to, PIECE);
            if (got < 0)
                source_.messages.report_errno(Cause::not_received,
                                              "ERROR: reading socket failed for reason");
            else if (got == 0)
                source_.messages.report_silently(Cause::ended);
            if (got <= 0) {
                failed_ = true;
                break;
            }
            list_.reply.commit(static_cast<size_t>(got));
            bytes_ = list_.reply.data();
            size_ = list_.reply.size();
        }
        return !failed_;
    }

    // Makes sure of memory for `size` more bytes of the record.
    bool need(size_t size)
    {
        needed_ = sum_of_sizes(needed_, in_memory(size));
        return list_.memory.reserve(needed_);
    }

    template <class Row> void table_too_large(const ArrayView<Row> &, uint32_t)
    {
        report_no_memory("ERROR: Out of memory\n");
    }
    void table_too_large(const ArrayView<TopoDev> &, uint32_t)
    {
        report_no_memory("ERROR: Out of memory(switchTopoDevCount)\n");
    }
    void table_too_large(const ArrayView<TopoLink> &, uint32_t announced)
    {
        source_.messages.report(Cause::no_memory, 0, "ERROR: Out of memory(linkCount=%d)\n",
                                static_cast<int32_t>(announced));
        failed_ = true;
    }
    void report_no_memory(const char *message)
    {
        if (!failed_)
            source_.messages.report(Cause::no_memory, 0, "%s", message);
        failed_ = true;
    }

    // Fields are passed over without looking whether they have come; what is read, and the end of a
    // record, makes sure of it:
    //
    //     bytes_                    size_
    //     |--- has been received ---|
    //     |--- has been passed over ---------|
    //                                        at_
    ByteSource &source_;
    WtpList &list_;
    WtpCfg cfg_; // is passed over
    const uint8_t *bytes_ = nullptr;
    size_t size_ = 0;
    size_t at_ = 0;
    size_t needed_ = 0; // memory for the record so far
    bool failed_ = false;
};

// The second pass, over bytes that are known to be whole: the visitor that fills a record.
class RecordReader : public CountReader<RecordReader> {
public:
    RecordReader(const uint8_t *at, uint8_t *memory) : at_(at), memory_(memory) {}

    const uint8_t *at() const { return at_; }

    template <class Field> void operator()(const char *, Field &field)
    {
        if constexpr (std::is_integral_v<Field>)
            field = from_big_endian<Field>(at_);
        else
            memcpy(&field, at_, sizeof field);
        at_ += sizeof field;
    }

    // A NUL within a text ends it.
    void operator()(const char *, std::string_view &text)
    {
        const auto length = number<uint16_t>();
        if (length == 0)
            return;
        const auto *bytes = reinterpret_cast<const char *>(at_);
        text = {bytes, strnlen(bytes, length)};
        at_ += length;
    }

    // A host name comes from a station, so from anyone: anything but printable ASCII empties it.
    void hostname(const char *name_of_field, std::string_view &name)
    {
        (*this)(name_of_field, name);
        for (const char c : name)
            if (c < 0x20 || c > 0x7E)
                name = {};
    }

    bool present(Section) { return number<uint8_t>() != 0; }

    bool make(WtpCfg *&part)
    {
        part = new (take(sizeof(WtpCfg))) WtpCfg();
        return true;
    }

    template <class Row> void counted_rows(const char *, ArrayView<Row> &table, uint32_t announced)
    {
        table = ArrayView<Row>(take(size_t{announced} * sizeof(Row)));
        for (uint32_t i = 0; i < announced; i++)
            visit_fields(*this, table.append());
    }

    template <class Int> Int number()
    {
        const Int number = from_big_endian<Int>(at_);
        at_ += sizeof number;
        return number;
    }

private:
    void *take(size_t size)
    {
        void *taken = memory_;
        memory_ += in_memory(size);
        return taken;
    }

    const uint8_t *at_;
    uint8_t *memory_;
};

} // namespace

// Makes the record that begins at `start` in the checked reply.
static const WtpRecord *read_wtp_record(WtpList &list, size_t start)
{
    uint8_t *memory = list.memory.data();
    auto *record = new (memory) WtpRecord();
    RecordReader reader(list.reply.data() + start, memory + in_memory(sizeof *record));
    if (list.part == WtpPart::basics)
        visit_basics(reader, *record);
    else
        visit_fields(reader, *record);
    return record;
}

int receive_wtp_list(ByteSource &source, WtpList &list)
{
    ReplyChecker checker(source, list);
    WtpRecord passed_over;
    while (checker.marker() == 0 && checker.ok())
        checker.check(passed_over);
    if (checker.ok())
        return 0;
    free_wtp_list(list);
    return 1;
}

int fetch_wtp_list(AcSession &session, WtpList &list, uint32_t filter, const MacList &macs)
{
    if (send_request(session, WtpListRequest{filter, macs}) != 0)
        return 1;
    return receive_wtp_list(session, list);
}

const WtpRecord *first_wtp(WtpList &list, WtpPart part)
{
    list.part = part;
    list.next = 0;
    return next_wtp(list);
}

const WtpRecord *next_wtp(WtpList &list)
{
    size_t start;
    if (list.next == list.starts.size())
        return nullptr;
    memcpy(&start, list.starts.data() + list.next, sizeof start);
    list.next += sizeof start;
    return read_wtp_record(list, start);
}

void free_wtp_list(WtpList &list)
{
    list.reply.clear();
    list.starts.clear();
    list.memory.clear();
    list.next = 0;
}
