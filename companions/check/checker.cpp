// SPDX-License-Identifier: MIT
#include "check/checker.h"

#include "common/output_file.h"
#include "common/plain_text.h"
#include "common/stored_message.h"
#include "config/config_file.h"
#include "config/config_value.h"
#include "util/ipv4.h"

#include <cstdlib>
#include <cstring>

// What a file's values are handed to, one after the other; none of them ends the walk.
struct Checker::Walk {
    Walk(DeviceKind kind, TlvBuffer &buffer, std::vector<SentItem> &sent, Diagnostics &list)
        : config(kind, buffer), items(sent), diagnostics(list)
    {
        buffer.messages = message.sink();
    }

    StoredMessage message; // what zov would print of the value at hand
    ConfigContext config;
    std::vector<SentItem> &items;
    Diagnostics &diagnostics;

    static int take_value(std::string_view path, IndexKey key, const json_value &value, void *walk);
    static int take_refusal(const json_value &value, const char *message, void *walk);
    void check_unchanged(std::string_view path, const json_value &value);
    void report(const json_value *at);
};

// The message that was stored is one of the value; null: of the file.
void Checker::Walk::report(const json_value *at)
{
    if (message.cause == Cause::no_memory)
        throw std::bad_alloc();
    diagnostics.add(at, message.text);
    message.clear();
}

int Checker::Walk::take_value(std::string_view path, IndexKey key, const json_value &value,
                              void *walk)
{
    auto &self = *static_cast<Walk *>(walk);
    const size_t size = self.config.items.wire_size();
    if (config_value_handler(path, key, value, &self.config) != 0) {
        self.report(&value);
        return 0;
    }
    self.check_unchanged(path, value);
    if (self.config.items.wire_size() == size)
        return 0;
    const DeviceKind kind = self.config.kind;
    const ConfigArray *array = value.type == json_array ? config_array_find(path) : nullptr;
    const ConfigKey *row = nullptr;
    for (const DeviceKind of : {kind, other_kind(kind)})
        if (array == nullptr && row == nullptr)
            row = config_key_find(config_keys(of), path);
    if (array != nullptr)
        path = array->path;
    else if (row != nullptr)
        path = row->path;
    self.items.push_back({self.config.items.wire_size(), path, row});
    return 0;
}

int Checker::Walk::take_refusal(const json_value &value, const char *message, void *walk)
{
    auto &self = *static_cast<Walk *>(walk);
    self.diagnostics.add(&value,
                         message != nullptr ? message : "ERROR: An object without members.");
    return 0;
}

// Values that zov cfg takes and sends as other ones.
void Checker::Walk::check_unchanged(std::string_view path, const json_value &value)
{
    const ConfigKey *row = config_key_find(config_keys(config.kind), path);
    if (row == nullptr || value.type != row->kind())
        return;
    const std::string place = " for '" + std::string(path) + "'.";
    Ipv4 unused;
    if (row->form == FORM_U16 && value.u.integer > UINT16_MAX)
        diagnostics.add(&value, "ERROR: config value '" + std::to_string(value.u.integer) +
                                    "' is sent as " + std::to_string(value.u.integer & UINT16_MAX) +
                                    place);
    if (value.type != json_string)
        return;
    const char *text = value.u.string.ptr;
    if (strlen(text) < value.u.string.length)
        diagnostics.add(&value, "ERROR: config value ends at its NUL character" + place);
    if (row->form == FORM_SERVER_ADDRESS && *text != '\0' && !parse_ipv4(text, unused))
        diagnostics.add(&value, "ERROR: config value '" + std::string(text) +
                                    "' is sent as 0.0.0.0" + place);
}

// The line that the parser's message begins with, or has in brackets; 0 when there is none.
static unsigned line_of(std::string_view why)
{
    const size_t bracket = why.find("(at ");
    return static_cast<unsigned>(
        atoi(why.substr(bracket == std::string_view::npos ? 0 : bracket + strlen("(at ")).data()));
}

// The parser's message without its line and its column, which it does not count.
static std::string without_place(std::string why)
{
    if (const size_t bracket = why.find(" (at "); bracket != std::string::npos)
        why.erase(bracket);
    else if (const size_t space = why.find(": "); space != std::string::npos)
        why.erase(0, space + 2);
    return why;
}

static int no_digest(const char *, uint8_t digest[16], const Messages &)
{
    memset(digest, 0, 16);
    return 0;
}

bool Checker::check(const char *name)
{
    const char *path = strcmp(name, "-") == 0 ? "/dev/stdin" : name;
    buffer_.wire.clear();
    items_.clear();
    Diagnostics diagnostics;
    Walk walk(known_.kind, buffer_, items_, diagnostics);
    if (!digests_)
        walk.config.digest = no_digest;
    Bytes bytes;
    JsonTree root(nullptr, json_value_free);
    char why[json_error_max] = "";
    if (config_file_read(path, bytes, buffer_.messages) != 0) {
        walk.report(nullptr);
    } else if (bytes.size() == 0) {
        diagnostics.add(nullptr, "ERROR: No member 'wtp_cfg', the file is empty.");
    } else if ((root = config_text_parse(path, bytes, buffer_.messages, why)) == nullptr) {
        walk.report(nullptr);
        diagnostics.explain(line_of(why), without_place(why));
    }
    const std::string_view text(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    if (root != nullptr) {
        diagnostics.begin_walk();
        check_members(known_, *root, diagnostics);
        diagnostics.begin_walk();
        if (!diagnostics.empty()) // each digest costs a process, and there are no items to show
            walk.config.digest = no_digest;
        JsonIterStack stack;
        json_walk(stack, *root, {Walk::take_value, Walk::take_refusal, &walk});
    }
    diagnostics.print(name, text, root.get());
    if (!diagnostics.empty())
        items_.clear();
    buffer_.messages = {};
    return diagnostics.empty();
}

void Checker::print_items(const char *name) const
{
    OutputFile out("-", 0);
    if (name != nullptr)
        out.put(plain_text(name) + ":\n");
    out.put(items_text(buffer_, items_));
    out.finish();
}
