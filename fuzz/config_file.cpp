// SPDX-License-Identifier: MIT
// Fuzz target: a configuration file, through parsing, the walk and the items. The first byte
// chooses the device kind. The items must be whole.
#include "config/config_file.h"
#include "config/config_walk.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

// md5sum would be started once a password; the digest is not what is looked for here.
int password_digest(const char *, uint8_t digest[16], const Messages &)
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
    // Every item within the bytes, and none behind them.
    const uint8_t *at = items.wire.data();
    size_t left = items.wire_size();
    const auto take_16_bits = [&] {
        if (left < 2)
            abort();
        at += 2;
        left -= 2;
        return static_cast<size_t>(at[-2] << 8 | at[-1]);
    };
    const auto skip_bytes = [&](size_t most) {
        const size_t length = take_16_bits();
        if (length > most || length > left)
            abort();
        at += length;
        left -= length;
    };
    while (left > 0) {
        if (take_16_bits() == 0) // no item has type 0
            abort();
        skip_bytes(JsonIterStack::DEPTH_MAX);
        skip_bytes(CONFIG_VALUE_BYTES_MAX);
    }
    return 0;
}
