// SPDX-License-Identifier: MIT
#include "device/wtp_request.h"

#include "device/wtp_layout.h"
#include "proto/reply_reader.h"
#include "proto/request_writer.h"
#include "util/output.h"

namespace {

// The visitor of wtp_layout.h that fills a record from a reply.
class RecordReader {
public:
    RecordReader(ReplyReader &reply, Arena &memory) : reply_(reply), memory_(memory) {}

    template <class Field> void operator()(const char *, Field &field) { reply_.read(field); }

    void operator()(const char *, ArenaText &text)
    {
        reply_.read_text([&](size_t length) { return text.allocate(memory_, length); });
    }

    // A host name comes from a station, so from anyone: anything but printable ASCII empties it.
    void hostname(const char *name_of_field, ArenaText &name)
    {
        (*this)(name_of_field, name);
        if (name.absent())
            return;
        for (const char *c = name.c_str(); *c != '\0'; c++)
            if (*c < 0x20 || *c > 0x7E)
                *name.data() = '\0';
    }

    bool present(Section) { return reply_.number<uint8_t>() != 0; }

    template <class Part> bool make(Part *&part)
    {
        part = memory_.make<Part>();
        if (part == nullptr)
            reply_.report_no_memory();
        return part != nullptr;
    }

    template <class Int, class Row> Int count(const char *, const ArenaTable<Row> &, CountOf<Int>)
    {
        return reply_.number<Int>();
    }

    template <class Int, class Row>
    void rows(const char *name, ArenaTable<Row> &table, CountOf<Int>)
    {
        const auto announced = reply_.number<Int>();
        if (announced > 0)
            counted_rows(name, table, static_cast<uint32_t>(announced));
    }

    template <class Row> void counted_rows(const char *, ArenaTable<Row> &table, uint32_t announced)
    {
        if (announced == 0 || !reply_.ok())
            return;
        if (announced > INT32_MAX || !table.reserve(memory_, announced)) {
            table_too_large(table, announced);
            return;
        }
        for (uint32_t i = 0; i < announced && reply_.ok(); i++)
            lay_out(*this, table.append());
    }

private:
    template <class Row> void table_too_large(const ArenaTable<Row> &, uint32_t)
    {
        reply_.report_no_memory();
    }
    void table_too_large(const ArenaTable<TopoDev> &, uint32_t)
    {
        reply_.report_no_memory("ERROR: Out of memory(switchTopoDevCount)\n");
    }
    void table_too_large(const ArenaTable<TopoLink> &, uint32_t announced)
    {
        fail("ERROR: Out of memory(linkCount=%d)\n", static_cast<int32_t>(announced));
        reply_.set_failed();
    }

    ReplyReader &reply_;
    Arena &memory_;
};

} // namespace

int read_wtp_record(ReplyReader &reply, Arena &memory, WtpRecord &record)
{
    RecordReader wire(reply, memory);
    lay_out(wire, record);
    return reply.ok() ? 0 : 1;
}

int read_wtp_list(ByteSource &source, WtpList &list)
{
    ReplyReader reply(source);
    while (reply.number<uint8_t>() == 0 && reply.ok()) {
        auto *record = list.memory.make<WtpRecord>();
        if (record == nullptr)
            reply.report_no_memory();
        else if (read_wtp_record(reply, list.memory, *record) == 0)
            append_wtp(list, record);
    }
    if (reply.ok())
        return 0;
    free_wtp_list(list);
    return 1;
}

int fetch_wtp_list(AcSession &session, WtpList &list, uint32_t filter, const MacList &macs)
{
    RequestWriter request(session, COMMAND_WTP_LIST);
    request.u32(filter);
    request.mac_list(macs);
    if (request.finish() != 0)
        return 1;
    return read_wtp_list(session, list);
}
