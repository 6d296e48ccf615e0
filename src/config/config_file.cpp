// SPDX-License-Identifier: MIT
#include "config/config_file.h"

#include "config/config_value.h"
#include "config/config_walk.h"

#include <cstdio>
#include <memory>
#include <sys/stat.h>

enum : size_t { STREAM_PIECE = 65536 };

static int read_failed(const char *name, const Messages &messages)
{
    return messages.report("ERROR: read %s failed.\n", name);
}

// Room for size bytes at the end of the text; or null, with the message printed.
static uint8_t *room_for(size_t size, Bytes &text, const Messages &messages)
{
    uint8_t *place = text.prepare(size);
    if (place == nullptr)
        messages.report(Cause::no_memory, 0, "ERROR: Out of memory.\n");
    return place;
}

static int read_sized(FILE *file, const char *name, size_t size, Bytes &text,
                      const Messages &messages)
{
    uint8_t *place = room_for(size + 1, text, messages); // the parser looks behind the end
    if (place == nullptr)
        return 1;
    if (fread(place, 1, size, file) != size)
        return read_failed(name, messages);
    text.commit(size);
    return 0;
}

// Reads what cannot be sought, such as a pipe, to its end.
static int read_stream(FILE *file, const char *name, Bytes &text, const Messages &messages)
{
    while (feof(file) == 0 && ferror(file) == 0) {
        uint8_t *place = room_for(STREAM_PIECE, text, messages);
        if (place == nullptr)
            return 1;
        text.commit(fread(place, 1, STREAM_PIECE - 1, file));
    }
    return ferror(file) == 0 ? 0 : read_failed(name, messages);
}

int config_file_read(const char *name, Bytes &text, const Messages &messages)
{
    const std::unique_ptr<FILE, int (*)(FILE *)> file(fopen(name, "re"), fclose);
    struct stat status;
    if (file == nullptr)
        return messages.report("ERROR: Open %s failed.\n", name);
    if (fstat(fileno(file.get()), &status) != 0 || S_ISDIR(status.st_mode))
        return read_failed(name, messages);
    if (fseek(file.get(), 0, SEEK_END) != 0)
        return read_stream(file.get(), name, text, messages);
    const long size = ftell(file.get());
    rewind(file.get());
    return size < 0 ? read_failed(name, messages)
                    : read_sized(file.get(), name, static_cast<size_t>(size), text, messages);
}

JsonTree config_text_parse(const char *name, Bytes &text, const Messages &messages, char *why)
{
    text.data()[text.size()] = '\0';
    json_settings settings = {};
    JsonTree root(
        json_parse_ex(&settings, reinterpret_cast<const char *>(text.data()), text.size(), why),
        json_value_free);
    if (root == nullptr)
        messages.report("ERROR: Invalid config file %s.\n", name);
    return root;
}

int config_file_load(const char *name, DeviceKind kind, TlvBuffer &items)
{
    JsonTree root(nullptr, json_value_free);
    {
        Bytes text;
        if (config_file_read(name, text, items.messages) != 0)
            return 1;
        if (text.size() == 0)
            return 0;
        root = config_text_parse(name, text, items.messages, nullptr);
    }
    return root == nullptr ? 1 : config_tree_load(*root, kind, items);
}

int config_tree_load(const json_value &root, DeviceKind kind, TlvBuffer &items)
{
    JsonIterStack stack;
    ConfigContext context(kind, items);
    return json_walk(stack, root, {config_value_handler, config_refusal_handler, &context});
}
