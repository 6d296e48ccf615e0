// SPDX-License-Identifier: MIT
// Fuzz target: a configuration file, through zov-check with zov beside it. The first byte chooses
// the kind of device. What zov refuses, zov-check refuses; what passes is sent as zov-check shows
// it.
#include "apply/merge.h"
#include "config/config_file.h"
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

// The items that zov would send; false when it refuses the file.
static bool load(std::string_view text, DeviceKind kind, TlvBuffer &items)
{
    items.messages.take = [](void *, Cause, int, const char *, va_list) {};
    if (text.empty())
        return true;
    Bytes bytes;
    uint8_t *place = bytes.prepare(text.size() + 1);
    PROMISE(place != nullptr);
    memcpy(place, text.data(), text.size());
    bytes.commit(text.size());
    const JsonTree root = config_text_parse("", bytes, items.messages, nullptr);
    return root != nullptr && config_tree_load(*root, kind, items) == 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Input input{data, size};
    const DeviceKind kind = input.byte() % 2 == 0 ? DEVICE_ACCESS_POINT : DEVICE_SWITCH;
    TlvBuffer items;
    const bool is_sent = load(input.text(), kind, items);
    static Checker checker(false, true);
    if (checker.open_text("", input.text()) != nullptr)
        checker.check(kind);
    const std::vector<Diagnostic> found = checker.take_diagnostics();
    const bool passes = std::none_of(found.begin(), found.end(),
                                     [](const Diagnostic &one) { return one.is_error; });
    PROMISE(is_sent || !passes);
    if (!passes)
        return 0;
    PROMISE(checker.buffer().bytes() == items.bytes());
    PROMISE(are_items_of(kind, items.bytes()));
    const std::string shown = items_text(checker.buffer(), checker.items());
    PROMISE(static_cast<size_t>(std::count(shown.begin(), shown.end(), '\n')) ==
            checker.items().size());
    return 0;
}
