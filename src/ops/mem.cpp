// SPDX-License-Identifier: MIT
// zov mem: the blocks of memory that the controller has in use.
//
//     reply     2 length L
//               L path of the record file, none when L is 0
//
// The record file has a line "name:line:size:time" for each memory block; name and line are the
// place of its allocation.
#include "options/option_checks.h"
#include "proto/reply_reader.h"
#include "proto/request_writer.h"
#include "util/calendar.h"
#include "util/index_set.h"
#include "util/output.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <unistd.h>

namespace {

// A block; in a summary the first block of a place stands for all of them, and the others have
// count 0.
struct MemRecord {
    char name[64] = {}; // padded with NULs
    uint32_t line = 0;
    uint32_t size = 0; // bytes
    int32_t time = 0;  // seconds since 1970
    uint32_t count = 1;

    bool same_place(const MemRecord &other) const
    {
        return line == other.line && memcmp(name, other.name, sizeof name) == 0;
    }
};

} // namespace

static int mem_request(AcSession &session, Text &path)
{
    if (send_request(session, AcMemoryRequest()) != 0)
        return 1;
    ReplyReader reply(session);
    reply.read(path);
    return reply.ok() ? 0 : 1;
}

static uint32_t number(const char *text)
{
    return static_cast<uint32_t>(strtoul(text, nullptr, 10));
}

// Splits the line in place. False when it has fewer than four fields; empty ones do not count.
static bool read_record(char *line, MemRecord &record)
{
    char *rest = line;
    char *field[4];
    for (char *&one : field)
        if ((one = strtok_r(rest, ":", &rest)) == nullptr)
            return false;
    strncpy(record.name, field[0], sizeof record.name - 1);
    record.line = number(field[1]);
    record.size = number(field[2]);
    record.time = static_cast<int32_t>(number(field[3]));
    return true;
}

// Reads the file in pieces of at most 255 bytes, each a line or a part of one.
static int read_records(FILE *file, FixedArray<MemRecord> &records)
{
    char line[256];
    uint32_t capacity = 0;
    while (fgets(line, sizeof line, file) != nullptr) {
        MemRecord record;
        if (!read_record(line, record))
            continue;
        if (records.size() == capacity) {
            capacity = capacity == 0 ? 64 : 2 * capacity;
            if (!records.reserve(capacity))
                return fail("ERROR: Out of memory.\n");
        }
        records.append() = record;
    }
    return 0;
}

static uint64_t hash_place(const MemRecord &record)
{
    uint64_t hash = record.line;
    for (size_t i = 0; i < sizeof record.name; i += sizeof hash) {
        uint64_t bits;
        memcpy(&bits, record.name + i, sizeof bits);
        hash = hash_bits(hash ^ bits);
    }
    return hash;
}

// Adds every record to the first one of the same place.
static int merge_places(FixedArray<MemRecord> &records)
{
    IndexSet places;
    if (!places.reserve(records.size()))
        return fail("ERROR: Out of memory.\n");
    for (uint32_t i = 0; i < records.size(); i++) {
        MemRecord &record = records[i];
        MemRecord &first = records[places.insert(
            hash_place(record), i, [&](uint32_t at) { return records[at].same_place(record); })];
        if (&first == &record)
            continue;
        first.size += record.size;
        first.count++;
        if (first.time < record.time)
            first.time = record.time;
        record.count = 0;
    }
    return 0;
}

static void print_records(const FixedArray<MemRecord> &records, bool all)
{
    Output &out = standard_output;
    for (const MemRecord &record : records) {
        if (record.count == 0)
            continue;
        out.put(record.name);
        out.put(':');
        out.put_number(record.line);
        out.put(" | size ");
        out.put_number(record.size);
        if (!all) {
            out.put(" | count ");
            out.put_number(record.count);
        }
        out.put(" | time ");
        out.put(calendar_text(record.time));
    }
}

static void print_total(uint32_t bytes, uint32_t entries)
{
    Output &out = standard_output;
    out.put("Total ");
    out.put_number(bytes);
    out.put(" bytes, ");
    out.put_number(entries);
    out.put(" entries\n");
}

// Reads the file at `path`, which may be null, and removes it.
static int take_records(const char *path, FixedArray<MemRecord> &records)
{
    if (path == nullptr)
        return 0;
    const std::unique_ptr<FILE, int (*)(FILE *)> file(fopen(path, "re"), fclose);
    const int status = file == nullptr ? 0 : read_records(file.get(), records);
    unlink(path);
    return status;
}

static int mem_command(AcSession &session, const OptArgList &opts)
{
    if (check_options(MEM_COMMAND, opts) != 0)
        return 1;
    const bool all = opts.given(OPT_ALL);

    Text path;
    FixedArray<MemRecord> records;
    if (mem_request(session, path) != 0 || take_records(path.data(), records) != 0)
        return 1;
    uint32_t bytes = 0;
    for (const MemRecord &record : records)
        bytes += record.size;
    if (!all && merge_places(records) != 0)
        return 1;
    print_records(records, all);
    print_total(bytes, records.size());
    return 0;
}

const CommandSpec MEM_COMMAND = {
    mem_command,           "mem",
    "Show AC memory info", {"--all\t\t\tlist every memory info instead of a summary"},
    {{OPT_ALL}},
};
