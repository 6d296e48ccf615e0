// SPDX-License-Identifier: MIT
#include "config/config_value.h"

#include "config/password_digest.h"
#include "proto/byte_order.h"
#include "util/ipv4.h"
#include "util/mac.h"
#include "util/output.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

enum : uint32_t {
    ELEMENTS_MAX = 256, // what an index byte can tell apart
};

static int invalid_value(const ConfigKey &row, const char *text)
{
    return fail("ERROR: Invalid config value '%s' for '%s'.\n", text, row.path.data());
}

static int too_long(const ConfigKey &row, size_t length)
{
    return fail("ERROR: config value of %zu bytes is too long (%u at most) for '%s'.\n", length,
                UINT16_MAX, row.path.data());
}

int ConfigValueHandler::take_array(std::string_view path, IndexKey key, uint32_t length)
{
    const ConfigArray *array = config_array_find(path);
    const ConfigList *list = config_list_find(path);
    if (length > ELEMENTS_MAX &&
        (array != nullptr || list != nullptr || config_keys_below(config_keys(kind_), path)))
        return fail("ERROR: config array of %u elements is too long (%u at most) for '%.*s'.\n",
                    length, ELEMENTS_MAX, static_cast<int>(path.size()), path.data());
    if (array != nullptr)
        return append_u32(array->id, key, length);
    if (list != nullptr)
        return start_list(*list, key.first(key.size() - 1), length);
    return 0;
}

int ConfigValueHandler::start_list(const ConfigList &list, IndexKey key, uint32_t length)
{
    if (length == 0) {
        const int32_t id = kind_ == DEVICE_SWITCH ? list.switch_id : list.access_point_id;
        if (id == ConfigList::NOT_SUPPORTED)
            return fail("ERROR: Only support Switch device\n");
        return tlv_append(items_, static_cast<uint32_t>(id), static_cast<uint32_t>(key.size()),
                          key.data(), 0, nullptr);
    }
    list_ = &list;
    list_length_ = length;
    list_bytes_.clear();
    const size_t size = size_t{length} * list.element_size;
    if (!list_bytes_.reserve(size))
        return fail("ERROR: Out of memory\n");
    while (list_bytes_.size() < size)
        list_bytes_.append() = 0;
    return 0;
}

int ConfigValueHandler::take_scalar(std::string_view path, IndexKey key, const json_value &value)
{
    const ConfigKey *row = config_key_find(config_keys(kind_), path);
    if (row == nullptr)
        return 0;
    if (value.type != row->kind)
        return fail("ERROR: json config value is not matched for '%s'\n", row->path.data());
    if (row->kind == json_integer)
        return take_integer(*row, key, value.u.integer);
    return take_string(*row, key, value.u.string.ptr, value.u.string.length);
}

int ConfigValueHandler::take_integer(const ConfigKey &row, IndexKey key, int64_t number)
{
    if (number < row.min || number > row.max)
        return fail("ERROR: config value '%lld' is out of range (%d to %d) for '%s'.\n",
                    static_cast<long long>(number), row.min, row.max, row.path.data());
    const auto bits = static_cast<uint32_t>(number);
    if (row.form == FORM_U16)
        return tlv_append_u16(items_, static_cast<uint32_t>(row.id),
                              static_cast<uint32_t>(key.size()), key.data(), bits);
    return append_u32(row.id, key, bits);
}

int ConfigValueHandler::take_string(const ConfigKey &row, IndexKey key, const char *text,
                                    uint32_t length)
{
    if (length < static_cast<uint32_t>(row.min) || length > static_cast<uint32_t>(row.max))
        return fail("ERROR: config string length '%u' is out of range (%d-%d) for '%s'.\n", length,
                    row.min, row.max, row.path.data());
    Ipv4 addr;
    switch (row.form) {
    case FORM_IPV4:
        if (!parse_ipv4(text, addr))
            return invalid_value(row, text);
        return append(row, key, addr.octet, sizeof addr.octet);
    case FORM_SERVER_ADDRESS:
        if (!parse_ipv4(text, addr))
            addr = Ipv4();
        return append(row, key, addr.octet, sizeof addr.octet);
    case FORM_IP_SETTINGS:
        return take_ip_settings(row, key, text);
    case FORM_DATA_RATE:
        return take_data_rate(row, key, text);
    case FORM_PASSWORD_DIGEST:
        return take_password(row, key, text);
    case FORM_MAC_LIST:
        return take_mac(row, key, text);
    case FORM_HOST_LIST:
        return take_host(row, key, text, length);
    default:
        return take_text(row, key, text);
    }
}

int ConfigValueHandler::take_text(const ConfigKey &row, IndexKey key, const char *text)
{
    const size_t length = strlen(text);
    if (length > UINT16_MAX)
        return too_long(row, length);
    return tlv_append_string(items_, static_cast<uint32_t>(row.id),
                             static_cast<uint32_t>(key.size()), key.data(), text);
}

int ConfigValueHandler::take_ip_settings(const ConfigKey &row, IndexKey key, const char *text)
{
    Ipv4 setting[3];
    if (!parse_ip_settings(text, setting[0], setting[1], setting[2]))
        return invalid_value(row, text);
    return append(row, key, setting, sizeof setting);
}

int ConfigValueHandler::take_data_rate(const ConfigKey &row, IndexKey key, const char *text)
{
    int code = 0;
    if (strcmp(text, "auto") == 0) {
        code = 0;
    } else if (const char *vht = strstr(text, "VHTMCS")) {
        code = atoi(vht + strlen("VHTMCS")) + 101;
    } else if (const char *mcs = strstr(text, "MCS")) {
        code = atoi(mcs + strlen("MCS")) + 1;
    } else if (strchr(text, 'M') == nullptr) {
        return invalid_value(row, text);
    } else {
        const char *point = strchr(text, '.');
        code = 1000 * atoi(text) + (point == nullptr ? 0 : 100 * atoi(point + 1));
    }
    return append_u32(row.id, key, static_cast<uint32_t>(code));
}

int ConfigValueHandler::take_password(const ConfigKey &row, IndexKey key, const char *text)
{
    uint8_t digest[16];
    if (password_digest(text, digest) != 0)
        return 1;
    return append(row, key, digest, sizeof digest);
}

// The place of a list's element; null when the value is in no list that has begun (a member can be
// named as if it were an array's element).
uint8_t *ConfigValueHandler::element(const ConfigKey &row, IndexKey key)
{
    if (list_ == nullptr || list_->path != row.path || key.empty() || key.back() >= list_length_)
        return nullptr;
    return &list_bytes_[size_t{key.back()} * list_->element_size];
}

int ConfigValueHandler::take_mac(const ConfigKey &row, IndexKey key, const char *text)
{
    Mac mac;
    uint8_t *place = element(row, key);
    if (place == nullptr || !parse_mac(text, mac) || mac.is_group())
        return invalid_value(row, text);
    memcpy(place, mac.byte, sizeof mac.byte);
    return finish_element(row, key, "MACs");
}

int ConfigValueHandler::take_host(const ConfigKey &row, IndexKey key, const char *text,
                                  uint32_t length)
{
    uint8_t *place = element(row, key);
    if (place == nullptr)
        return invalid_value(row, text);
    memcpy(place, text, length); // at most 255 bytes, by the key's row
    return finish_element(row, key, kind_ == DEVICE_SWITCH ? nullptr : "hostname");
}

static bool has_equal_elements(const Table<uint8_t> &bytes, uint32_t size)
{
    for (const uint8_t *one = bytes.begin(); one < bytes.end(); one += size)
        for (const uint8_t *other = one + size; other < bytes.end(); other += size)
            if (memcmp(one, other, size) == 0)
                return true;
    return false;
}

// After the last element the list becomes one item. `what` names the elements, which must differ;
// null: they need not.
int ConfigValueHandler::finish_element(const ConfigKey &row, IndexKey key, const char *what)
{
    if (key.back() != list_length_ - 1)
        return 0;
    if (what != nullptr && has_equal_elements(list_bytes_, list_->element_size))
        return fail("ERROR: Duplicate %s in '%s'.\n", what, row.path.data());
    list_ = nullptr;
    return append(row, key.first(key.size() - 1), list_bytes_.begin(), list_bytes_.size());
}

int ConfigValueHandler::append_u32(int32_t id, IndexKey key, uint32_t number)
{
    return tlv_append_u32(items_, static_cast<uint32_t>(id), static_cast<uint32_t>(key.size()),
                          key.data(), number);
}

int ConfigValueHandler::append(const ConfigKey &row, IndexKey key, const void *value, size_t length)
{
    if (length > UINT16_MAX)
        return too_long(row, length);
    return tlv_append(items_, static_cast<uint32_t>(row.id), static_cast<uint32_t>(key.size()),
                      key.data(), static_cast<uint32_t>(length), value);
}
