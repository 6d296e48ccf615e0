// SPDX-License-Identifier: MIT
#include "documents/checker.h"

#include "config/config_value.h"
#include "documents/meaning.h"
#include "documents/strict_json.h"
#include "util/byte_order.h"

#include <cstdlib>
#include <cstring>

// The message that was stored is one of the value; null: of the file.
static void report(StoredMessage &message, const json_value *at, Diagnostics &diagnostics)
{
    if (message.cause == Cause::no_memory)
        throw std::bad_alloc();
    diagnostics.add(at, message.text);
    message.clear();
}

// What a file's values are handed to, one after the other; none of them ends the walk.
struct Checker::Walk {
    Walk(const KnownMembers &settings, StoredMessage &stored, TlvBuffer &buffer,
         std::vector<SentItem> *sent, Diagnostics &list)
        : known(settings), message(stored), config(known.kind, buffer), items(sent),
          diagnostics(list)
    {
    }

    const KnownMembers &known;
    StoredMessage &message; // what zov would print of the value at hand
    ConfigContext config;
    std::vector<SentItem> *items; // null: they are not wanted
    Diagnostics &diagnostics;

    static int take_value(std::string_view path, IndexKey key, const json_value &value, void *walk);
    static int take_refusal(const json_value &value, const char *message, void *walk);
    void check_unchanged(std::string_view path, IndexKey key, const json_value &value,
                         size_t start);
    std::string_view last_bytes(const ConfigKey &row, IndexKey key, size_t start) const;
};

int Checker::Walk::take_value(std::string_view path, IndexKey key, const json_value &value,
                              void *walk)
{
    auto &self = *static_cast<Walk *>(walk);
    const size_t size = self.config.items.wire_size();
    if (config_value_handler(path, key, value, &self.config) != 0) {
        report(self.message, &value, self.diagnostics);
        return 0;
    }
    self.check_unchanged(path, key, value, size);
    if (self.items == nullptr || self.config.items.wire_size() == size)
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
    self.items->push_back({self.config.items.wire_size(), path, row});
    return 0;
}

int Checker::Walk::take_refusal(const json_value &value, const char *message, void *walk)
{
    auto &self = *static_cast<Walk *>(walk);
    self.diagnostics.add(&value,
                         message != nullptr ? message : "ERROR: An object without members.");
    return 0;
}

// The bytes that were made of the last value: of a list's element those in the list, else the value
// of the last item, which begins at `start`.
std::string_view Checker::Walk::last_bytes(const ConfigKey &row, IndexKey key, size_t start) const
{
    const size_t size = row.element_size();
    const Bytes &bytes = size > 0 ? config.list_bytes : config.items.wire;
    size_t value = size > 0 ? key.back() * size : start + 2;
    if (size == 0) // behind id and index key
        value += 2 + from_big_endian<uint16_t>(bytes.data() + value) + 2;
    const auto *data = reinterpret_cast<const char *>(bytes.data());
    return {data + value, size > 0 ? size : bytes.size() - value};
}

// Values that zov cfg takes and sends as other ones: found by showing what would be sent.
void Checker::Walk::check_unchanged(std::string_view path, IndexKey key, const json_value &value,
                                    size_t start)
{
    const ConfigKey *row = known.row_of(path);
    if (row == nullptr || value.type != row->kind() ||
        (row->element_size() > 0 &&
         config.list_bytes.size() <= size_t{key.back()} * row->element_size()))
        return;
    const std::string_view text = value.type == json_string
                                      ? std::string_view(value.u.string.ptr, value.u.string.length)
                                      : std::string_view();
    const std::string given =
        value.type == json_string ? std::string(text) : std::to_string(value.u.integer);
    const bool is_cut = text.find('\0') != std::string_view::npos;
    const std::string shown = shown_value(*row, last_bytes(*row, key, start));
    if (!is_cut && (given == shown || mean_the_same(*row, given, shown)))
        return;
    diagnostics.add(&value, (is_cut ? "ERROR: config value ends at its NUL character"
                                    : "ERROR: config value '" + given + "' is sent as " + shown) +
                                " for '" + std::string(path) + "'.");
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

uint8_t kind_in_document(const json_value &root)
{
    if (root.type == json_object)
        for (const json_object_entry &member : root.u.object)
            if (std::string_view(member.name, member.name_length) == "comment" &&
                member.value->type == json_string)
                return kind_in_comment({member.value->u.string.ptr, member.value->u.string.length});
    return 0;
}

void Checker::begin(const char *name)
{
    name_ = name;
    diagnostics_ = Diagnostics(strict_);
    buffer_.wire.clear();
    buffer_.messages = message_.sink();
    items_.clear();
    text_.clear();
    root_.reset();
}

const json_value *Checker::open(const char *name)
{
    const char *path = strcmp(name, "-") == 0 ? "/dev/stdin" : name;
    begin(name);
    if (config_file_read(path, text_, buffer_.messages) != 0)
        report(message_, nullptr, diagnostics_);
    else
        parse(path);
    return root_.get();
}

const json_value *Checker::open_text(const std::string &name, std::string_view text)
{
    begin(name.c_str());
    if (!text_.append(text.data(), text.size()) || text_.prepare(1) == nullptr)
        throw std::bad_alloc();
    return parse(name_.c_str());
}

const json_value *Checker::parse(const char *path)
{
    char why[json_error_max] = "";
    if (text_.size() == 0) {
        diagnostics_.add(nullptr, "No member 'wtp_cfg', the file is empty.");
    } else if ((root_ = config_text_parse(path, text_, buffer_.messages, why)) == nullptr) {
        report(message_, nullptr, diagnostics_);
        diagnostics_.explain(line_of(why), without_place(why));
    } else if (const JsonFault fault =
                   find_json_fault({reinterpret_cast<const char *>(text_.data()), text_.size()});
               fault.line > 0) {
        diagnostics_.add(nullptr, fault.what);
        diagnostics_.explain(fault.line, fault.reason);
    }
    return root_.get();
}

void Checker::check(DeviceKind kind)
{
    const KnownMembers &known = kind == DEVICE_SWITCH ? switches_ : access_points_;
    buffer_.wire.clear();
    items_.clear();
    diagnostics_.begin_walk();
    check_members(known, *root_, diagnostics_);
    diagnostics_.begin_walk();
    Walk walk(known, message_, buffer_, keeps_items_ ? &items_ : nullptr, diagnostics_);
    if (!keeps_items_ || diagnostics_.has_errors())
        walk.config.digest = no_digest;
    JsonIterStack stack;
    json_walk(stack, *root_, {Walk::take_value, Walk::take_refusal, &walk});
    if (buffer_.wire.size() == 0 && !diagnostics_.has_errors())
        diagnostics_.warn("There is no setting in it: nothing is sent.");
    if (diagnostics_.has_errors())
        items_.clear();
}

std::vector<Diagnostic> Checker::take_diagnostics()
{
    return diagnostics_.take(name_, {reinterpret_cast<const char *>(text_.data()), text_.size()},
                             root_.get());
}
