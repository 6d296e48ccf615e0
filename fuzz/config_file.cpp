// SPDX-License-Identifier: MIT
// Fuzz target: a configuration file, through parsing, the walk and the items. The first byte
// chooses the device kind. The items must fit their wire form and add up to the announced size.
#include "config/config_file.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

// md5sum would be started once a password; the digest is not what is looked for here.
int password_digest(const char *, uint8_t digest[16])
{
    memset(digest, 0, 16);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2)
        return 0;
    const DeviceKind kind = data[0] % 2 == 0 ? DEVICE_ACCESS_POINT : DEVICE_SWITCH;
    json_settings settings = {};
    const std::unique_ptr<json_value, void (*)(json_value *)> root(
        json_parse_ex(&settings, reinterpret_cast<const char *>(data + 1), size - 1, nullptr),
        json_value_free);
    if (root == nullptr)
        return 0;
    TlvBuffer items;
    if (config_tree_load(*root, kind, items) != 0)
        return 0;
    uint64_t total = 0;
    for (const TlvItem *item = items.first; item != nullptr; item = item->next) {
        if (item->type == 0 || item->type > UINT16_MAX || item->index_len > 63 ||
            item->value_len > UINT16_MAX)
            abort();
        total += 6 + item->index_len + item->value_len;
    }
    if (total != items.wire_size)
        abort();
    return 0;
}
