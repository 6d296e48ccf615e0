// SPDX-License-Identifier: MIT
#include "documents/items.h"

#include "common/address_text.h"
#include "common/plain_text.h"
#include "util/byte_order.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <numeric>

using std::string;
using std::string_view;

static unsigned number_16(const uint8_t *bytes)
{
    return from_big_endian<uint16_t>(bytes);
}

// What `text_of` makes of each piece of so many bytes, joined.
template <class TextOf>
static string joined(string_view value, size_t size, const char *separator, TextOf text_of)
{
    string all;
    for (size_t at = 0; at < value.size(); at += size)
        all += (at == 0 ? "" : separator) + string(text_of(value.substr(at, size)));
    return all;
}

// An address or a digest, which are nothing but bytes, from its bytes.
template <class Value> static Value value_of(string_view bytes)
{
    Value value;
    memcpy(&value, bytes.data(), sizeof value);
    return value;
}

static string mac_text(string_view bytes)
{
    return mac_name(value_of<Mac>(bytes));
}

static string ipv4_text(string_view bytes)
{
    return ipv4_name(value_of<Ipv4>(bytes));
}

// A number of one to four bytes, big-endian; it is signed where its setting can be negative.
static string number_text(const ConfigKey *row, string_view value)
{
    uint32_t bits = 0;
    for (const char byte : value)
        bits = bits << 8 | static_cast<uint8_t>(byte);
    if (row == nullptr || (row->min >= 0 && row->form != FORM_DATA_RATE))
        return std::to_string(bits);
    const size_t unused = 8 * (sizeof bits - value.size());
    return std::to_string(static_cast<int32_t>(bits << unused) >> unused);
}

string value_text(const ConfigKey *row, string_view value)
{
    switch (row == nullptr ? FORM_U32 : row->form) {
    case FORM_TEXT:
        return quoted_text(value);
    case FORM_IPV4:
    case FORM_SERVER_ADDRESS:
    case FORM_IP_SETTINGS:
        return joined(value, sizeof(Ipv4), "/", ipv4_text);
    case FORM_MAC_LIST:
        return value.empty() ? "none" : joined(value, row->element_size(), ",", mac_text);
    case FORM_HOST_LIST:
        return value.empty() ? "none"
                             : joined(value, row->element_size(), ",", [](string_view slot) {
                                   return quoted_text(slot.substr(0, slot.find('\0')));
                               });
    case FORM_PASSWORD_DIGEST:
        return digest_name(value_of<Md5Digest>(value));
    case FORM_U32:
    case FORM_U16:
    case FORM_DATA_RATE:
        break;
    }
    return number_text(row, value);
}

string items_text(const TlvBuffer &buffer, const std::vector<SentItem> &items)
{
    constexpr size_t COLUMNS = 4;
    std::vector<std::array<string, COLUMNS>> lines;
    std::array<size_t, COLUMNS> width = {};
    const uint8_t *at = buffer.wire.data();
    for (const SentItem &item : items) {
        const string id = std::to_string(number_16(at));
        const size_t key_length = number_16(at + 2);
        string index = key_length == 0 ? "-" : "";
        for (size_t i = 0; i < key_length; i++)
            index += (i == 0 ? "" : ".") + std::to_string(at[4 + i]);
        const uint8_t *value = at + 4 + key_length;
        lines.push_back(
            {id, index, string(item.path),
             value_text(item.row, {reinterpret_cast<const char *>(value + 2), number_16(value)})});
        for (size_t i = 0; i < COLUMNS; i++)
            width[i] = std::max(width[i], lines.back()[i].size());
        at = buffer.wire.data() + item.end;
    }
    string text;
    for (const auto &[id, index, path, value] : lines) {
        text += string(width[0] - id.size(), ' ') + id + "  ";
        text += index + string(width[1] - index.size() + 2, ' ');
        text += path + string(width[2] - path.size() + 2, ' ');
        text += value + "\n";
    }
    return text;
}
