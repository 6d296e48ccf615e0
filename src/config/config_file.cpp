// SPDX-License-Identifier: MIT
#include "config/config_file.h"

#include "config/config_walk.h"
#include "util/output.h"
#include "util/text.h"

#include <climits>
#include <cstdio>
#include <memory>

// Reads the whole file; `text` stays absent when the file is empty.
static int read_file(const char *name, Text &text, size_t &size)
{
    const std::unique_ptr<FILE, int (*)(FILE *)> file(fopen(name, "r"), fclose);
    if (file == nullptr)
        return fail("ERROR: Open %s failed.\n", name);
    fseek(file.get(), 0, SEEK_END);
    const long end = ftell(file.get());
    if (end == 0)
        return 0;
    if (end < 0 || end == LONG_MAX) // no regular file
        return fail("ERROR: read %s failed.\n", name);
    size = static_cast<size_t>(end);
    if (text.allocate(size) == nullptr)
        return fail("ERROR: Out of memory.\n");
    rewind(file.get());
    if (fread(text.data(), 1, size, file.get()) != size)
        return fail("ERROR: read %s failed.\n", name);
    return 0;
}

int config_file_load(const char *name, DeviceKind kind, TlvBuffer &items)
{
    std::unique_ptr<json_value, void (*)(json_value *)> root(nullptr, json_value_free);
    {
        Text text;
        size_t size = 0;
        if (read_file(name, text, size) != 0)
            return 1;
        if (text.absent())
            return 0;
        json_settings settings = {};
        root.reset(json_parse_ex(&settings, text.c_str(), size, nullptr));
    }
    if (root == nullptr)
        return fail("ERROR: Invalid config file %s.\n", name);
    return config_tree_load(*root, kind, items);
}

int config_tree_load(const json_value &root, DeviceKind kind, TlvBuffer &items)
{
    ConfigWalk walk(kind, items);
    return walk.visit(root);
}
