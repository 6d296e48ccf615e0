// SPDX-License-Identifier: MIT
#include "config/config_value.h"

#include "util/byte_order.h"
#include "util/ipv4.h"
#include "util/mac.h"

#include <cstdlib>
#include <cstring>

static int report_invalid(const ConfigContext &context, const ConfigKey &row, const char *text)
{
    return context.messages().report("ERROR: Invalid config value '%s' for '%s'.\n", text,
                                     row.path.data());
}

static int report_too_long(const ConfigContext &context, const ConfigKey &row, size_t length)
{
    return context.messages().report(
        "ERROR: config value of %zu bytes is too long (%u at most) for '%s'.\n", length,
        CONFIG_VALUE_BYTES_MAX, row.path.data());
}

// --- Arrays --------------------------------------------------------------------------------------

// The row of a list, whichever kind of device has it; null for what is no list.
static const ConfigKey *find_list(DeviceKind kind, std::string_view path)
{
    const ConfigKey *row = config_key_find(config_keys(kind), path);
    if (row == nullptr)
        row = config_key_find(config_keys(other_kind(kind)), path);
    return row == nullptr || row->element_size() == 0 ? nullptr : row;
}

static int take_empty_list(ConfigContext &context, const ConfigKey &list, IndexKey key)
{
    const bool of_switches_only = config_key_find(ACCESS_POINT_KEYS, list.path) == nullptr;
    if (of_switches_only && context.kind != DEVICE_SWITCH)
        return context.messages().report("ERROR: Only support Switch device\n");
    return tlv_append(context.items, list.id, key, {});
}

static int start_list(ConfigContext &context, const ConfigKey &list, uint32_t length)
{
    context.list = &list;
    context.list_length = length;
    context.list_refused = false;
    context.list_bytes.clear();
    const size_t size = size_t{length} * list.element_size();
    uint8_t *place = context.list_bytes.prepare(size);
    if (place == nullptr)
        return context.messages().report(Cause::no_memory, 0, "ERROR: Out of memory\n");
    memset(place, 0, size);
    context.list_bytes.commit(size);
    return 0;
}

static int take_array(ConfigContext &context, std::string_view path, IndexKey key, uint32_t length)
{
    const ConfigArray *array = config_array_find(path);
    const ConfigKey *list = find_list(context.kind, path);
    const uint32_t most = list == nullptr ? CONFIG_ELEMENTS_MAX : list->elements_max();
    if (length > most &&
        (array != nullptr || list != nullptr || config_keys_below(config_keys(context.kind), path)))
        return context.messages().report(
            "ERROR: config array of %u elements is too long (%u at most) for '%.*s'.\n", length,
            most, static_cast<int>(path.size()), path.data());
    if (array != nullptr)
        return tlv_append_u32(context.items, array->id, key, length);
    if (list == nullptr)
        return 0;
    return length == 0 ? take_empty_list(context, *list, key.first(key.size() - 1))
                       : start_list(context, *list, length);
}

// The place of a list's element; null when the value is in no list that has begun (a member can be
// named as if it were an array's element).
static uint8_t *element(ConfigContext &context, const ConfigKey &row, IndexKey key)
{
    if (context.list == nullptr || context.list->path != row.path || key.empty() ||
        key.back() >= context.list_length)
        return nullptr;
    return context.list_bytes.data() + size_t{key.back()} * row.element_size();
}

static bool has_equal_elements(const Bytes &bytes, uint32_t size)
{
    const uint8_t *end = bytes.data() + bytes.size();
    for (const uint8_t *one = bytes.data(); one < end; one += size)
        for (const uint8_t *other = one + size; other < end; other += size)
            if (memcmp(one, other, size) == 0)
                return true;
    return false;
}

// After the last element the list becomes one item. `what` names the elements.
static int finish_element(ConfigContext &context, const ConfigKey &row, IndexKey key,
                          const char *what)
{
    if (key.back() != context.list_length - 1)
        return 0;
    const Bytes &bytes = context.list_bytes;
    if (context.list_refused)
        return 0;
    if (row.has_distinct_elements(context.kind) && has_equal_elements(bytes, row.element_size()))
        return context.messages().report("ERROR: Duplicate %s in '%s'.\n", what, row.path.data());
    context.list = nullptr;
    return tlv_append(context.items, row.id, key.first(key.size() - 1),
                      {bytes.data(), bytes.size()});
}

static int take_mac(ConfigContext &context, const ConfigKey &row, IndexKey key, const char *text)
{
    Mac mac;
    uint8_t *place = element(context, row, key);
    if (place == nullptr || !parse_mac(text, mac) || mac.is_group())
        return report_invalid(context, row, text);
    memcpy(place, mac.byte, sizeof mac.byte);
    return finish_element(context, row, key, "MACs");
}

static int take_host(ConfigContext &context, const ConfigKey &row, IndexKey key, const char *text,
                     uint32_t length)
{
    uint8_t *place = element(context, row, key);
    if (place == nullptr)
        return report_invalid(context, row, text);
    memcpy(place, text, length); // at most 255 bytes, by the key's row
    return finish_element(context, row, key, "hostname");
}

// --- Single values -------------------------------------------------------------------------------

static int take_integer(ConfigContext &context, const ConfigKey &row, IndexKey key, int64_t number)
{
    if (number < row.min || number > row.max)
        return context.messages().report(
            "ERROR: config value '%lld' is out of range (%d to %d) for '%s'.\n",
            static_cast<long long>(number), row.min, row.max, row.path.data());
    const auto bits = static_cast<uint32_t>(number);
    if (row.form == FORM_U16)
        return tlv_append_u16(context.items, row.id, key, bits);
    return tlv_append_u32(context.items, row.id, key, bits);
}

static int take_text(ConfigContext &context, const ConfigKey &row, IndexKey key, const char *text)
{
    const size_t length = strlen(text);
    if (length > CONFIG_VALUE_BYTES_MAX)
        return report_too_long(context, row, length);
    return tlv_append_string(context.items, row.id, key, {text, length});
}

static int take_ip_settings(ConfigContext &context, const ConfigKey &row, IndexKey key,
                            const char *text)
{
    Ipv4 setting[3];
    if (!parse_ip_settings(text, setting[0], setting[1], setting[2]))
        return report_invalid(context, row, text);
    return tlv_append(context.items, row.id, key, {setting[0].octet, sizeof setting});
}

bool parse_data_rate(const char *text, int &code)
{
    if (strcmp(text, "auto") == 0) {
        code = 0;
    } else if (const char *vht = strstr(text, "VHTMCS")) {
        code = atoi(vht + strlen("VHTMCS")) + 101;
    } else if (const char *mcs = strstr(text, "MCS")) {
        code = atoi(mcs + strlen("MCS")) + 1;
    } else if (strchr(text, 'M') == nullptr) {
        return false;
    } else {
        const char *point = strchr(text, '.');
        code = 1000 * atoi(text) + (point == nullptr ? 0 : 100 * atoi(point + 1));
    }
    return true;
}

static int take_data_rate(ConfigContext &context, const ConfigKey &row, IndexKey key,
                          const char *text)
{
    int code = 0;
    if (!parse_data_rate(text, code))
        return report_invalid(context, row, text);
    return tlv_append_u32(context.items, row.id, key, static_cast<uint32_t>(code));
}

static int take_password(ConfigContext &context, const ConfigKey &row, IndexKey key,
                         const char *text)
{
    uint8_t digest[16];
    if (context.digest(text, digest, context.messages()) != 0)
        return 1;
    return tlv_append(context.items, row.id, key, digest);
}

static int take_string(ConfigContext &context, const ConfigKey &row, IndexKey key, const char *text,
                       uint32_t length)
{
    if (length < static_cast<uint32_t>(row.min) || length > static_cast<uint32_t>(row.max))
        return context.messages().report(
            "ERROR: config string length '%u' is out of range (%d-%d) for '%s'.\n", length, row.min,
            row.max, row.path.data());
    Ipv4 addr;
    switch (row.form) {
    case FORM_IPV4:
        if (!parse_ipv4(text, addr))
            return report_invalid(context, row, text);
        return tlv_append(context.items, row.id, key, addr.octet);
    case FORM_SERVER_ADDRESS:
        if (!parse_ipv4(text, addr))
            addr = Ipv4();
        return tlv_append(context.items, row.id, key, addr.octet);
    case FORM_IP_SETTINGS:
        return take_ip_settings(context, row, key, text);
    case FORM_DATA_RATE:
        return take_data_rate(context, row, key, text);
    case FORM_PASSWORD_DIGEST:
        return take_password(context, row, key, text);
    case FORM_MAC_LIST:
        return take_mac(context, row, key, text);
    case FORM_HOST_LIST:
        return take_host(context, row, key, text, length);
    case FORM_TEXT:
    case FORM_U32: // those two are no strings
    case FORM_U16:
        break;
    }
    return take_text(context, row, key, text);
}

static int take_scalar(ConfigContext &context, std::string_view path, IndexKey key,
                       const json_value &value)
{
    const ConfigKey *row = config_key_find(config_keys(context.kind), path);
    if (row == nullptr)
        return 0;
    if (value.type != row->kind())
        return context.messages().report("ERROR: json config value is not matched for '%s'\n",
                                         row->path.data());
    if (row->kind() == json_integer)
        return take_integer(context, *row, key, value.u.integer);
    return take_string(context, *row, key, value.u.string.ptr, value.u.string.length);
}

int config_value_handler(std::string_view path, IndexKey key, const json_value &value,
                         void *context)
{
    auto &config = *static_cast<ConfigContext *>(context);
    const int status = value.type == json_array
                           ? take_array(config, path, key, value.u.array.length)
                           : take_scalar(config, path, key, value);
    if (status != 0)
        config.list_refused = true;
    return status;
}

int config_refusal_handler(const json_value &, const char *message, void *context)
{
    return message == nullptr
               ? 1
               : static_cast<ConfigContext *>(context)->messages().report("%s", message);
}
