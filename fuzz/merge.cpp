// SPDX-License-Identifier: MIT
// Fuzz target: two configuration files, the second laid over the first as zov-apply does; between
// them a NUL. The first byte chooses the kind of device and what the second file is; behind another
// NUL may be a --set. What was laid over is there and changes nothing when it is laid over again,
// and what is stored of it is the same.
#include "apply/merge.h"
#include "apply/assignment.h"
#include "apply/differences.h"
#include "apply/sources.h"
#include "common/failure.h"
#include "documents/checker.h"
#include "fuzz/fuzz.h"

#include <algorithm>
#include <cstring>

// md5sum would be started once a password; the digest is not what is looked for here.
int password_digest(const char *, uint8_t digest[16], const Messages &)
{
    memset(digest, 0, 16);
    return 0;
}

// Whether zov-check passes a file and devices can have it; then its items but for states, or (with
// a key) those of one setting.
static bool check(std::string_view text, DeviceKind kind, std::string &items,
                  const ConfigKey *key = nullptr)
{
    static Checker checker(false, true);
    const json_value *root = checker.open_text("", text);
    if (root != nullptr)
        checker.check(kind);
    bool is_good = root != nullptr;
    for (const Diagnostic &one : checker.take_diagnostics())
        is_good &= !one.is_error;
    size_t begin = 0;
    for (const SentItem &item : checker.items()) {
        const ConfigArray *array = item.row == nullptr ? config_array_find(item.path) : nullptr;
        const unsigned marks = item.row != nullptr ? item.row->marks
                               : array != nullptr  ? array->marks
                                                   : 0U;
        is_good &= (marks & MARK_UNREADABLE) == 0;
        if ((marks & MARK_STATE) == 0 && (key == nullptr || item.row == key))
            items += checker.buffer().bytes().substr(begin, item.end - begin);
        begin = item.end;
    }
    return is_good;
}

static std::string items_of(const ConfigRow &row, DeviceKind kind)
{
    TlvBuffer items;
    const SettingTable &table = setting_table(kind);
    size_t members = 0;
    for (const SettingColumn &column : table.columns)
        members = std::max(members, column.member + 1);
    for (size_t member = 0; member < members; member++)
        append_items(items, table, row, member, true);
    return std::string(items.bytes());
}

// A --set as a document, or none.
static bool set_document(std::string_view text, DeviceKind kind, Document &made)
{
    try {
        const Assignment set = parse_assignment(text);
        const ConfigKey *key = set.key(kind);
        if (key == nullptr || set.from_file || set.from_input)
            return false;
        set.check(*key, kind);
        made.selectors = set.selectors;
        made.role = Document::set;
        return check(set.document(key, kind), kind, made.items, key) && !made.items.empty();
    } catch (const UsageError &) {
        return false;
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Input input{data, size};
    const uint8_t choice = input.byte();
    const DeviceKind kind = choice % 2 == 0 ? DEVICE_ACCESS_POINT : DEVICE_SWITCH;
    Document document;
    std::string stored;
    const bool is_stored = check(input.text_to_nul(), kind, stored);
    const bool is_laid = check(input.text_to_nul(), kind, document.items);
    Document set;
    const bool is_set = input.size > 0 && set_document(input.text(), kind, set);
    if (!is_stored)
        return 0;
    const ConfigRow before = row_of_items(stored, kind);
    PROMISE(compare(before, before, kind).empty());
    for (Document *one : {is_laid ? &document : nullptr, is_set ? &set : nullptr}) {
        if (one == nullptr)
            continue;
        one->kind = kind;
        if (one == &document)
            one->role = choice & 2 ? Document::own : Document::layer;
        ConfigRow row = before;
        if (!lay_over(row, {one}, kind).problems.empty())
            continue;
        ConfigRow again = row;
        PROMISE(lay_over(again, {one}, kind).problems.empty());
        PROMISE(compare(row, again, kind).empty() && compare(again, row, kind).empty());
        const std::string items = items_of(row, kind);
        PROMISE(are_items_of(kind, items));
        PROMISE(compare(row, row_of_items(items, kind), kind).empty());
        for (const Difference &difference : compare(before, row, kind))
            PROMISE(!difference_text(difference, kind).empty());
    }
    return 0;
}
