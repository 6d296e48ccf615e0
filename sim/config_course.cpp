// SPDX-License-Identifier: MIT
#include "sim/config_course.h"

#include "common/command_line.h"
#include "config/config_keys.h"
#include "config/config_value.h"
#include "device/wtp_record.h"
#include "sim/record_writer.h"

#include <algorithm>
#include <arpa/inet.h>
#include <limits>

namespace {

// Splits a text at the first separator; without one, the second part is null.
std::string cut(std::string &text, char separator, const char *&rest)
{
    const size_t end = text.find(separator);
    rest = end == std::string::npos ? nullptr : text.c_str() + end + 1;
    return text.substr(0, end);
}

// --- Values, each appended as in an item; false when the text is none ----------------------------

// A number that fits with or without a sign.
template <class Int> bool put_number(std::string &value, const std::string &text)
{
    using Signed = std::numeric_limits<std::make_signed_t<Int>>;
    int64_t number = 0;
    const bool good =
        take_number<int64_t>(text.c_str(), Signed::min(), std::numeric_limits<Int>::max(), number);
    put(value, static_cast<Int>(number));
    return good;
}

bool put_ipv4(std::string &value, const std::string &text)
{
    Ipv4 addr;
    const bool good = inet_pton(AF_INET, text.c_str(), addr.octet) == 1;
    put(value, addr);
    return good;
}

bool put_mac(std::string &value, const std::string &text)
{
    Mac mac;
    const bool good = text.find_first_not_of("0123456789ABCDEFabcdef:") == std::string::npos &&
                      std::count(text.begin(), text.end(), ':') == 5 &&
                      parse_mac(text.c_str(), mac);
    put(value, mac);
    return good;
}

bool put_host(std::string &value, std::string text)
{
    const bool good = text.size() < sizeof(HostSlot);
    text.resize(sizeof(HostSlot));
    value += text;
    return good;
}

bool put_rate(std::string &value, const std::string &text)
{
    int code = 0;
    const bool good = parse_data_rate(text.c_str(), code);
    put(value, code);
    return good;
}

// A digest, in hexadecimal digits as reports show it.
bool put_digest(std::string &value, const std::string &text)
{
    bool good = text.size() == 2 * sizeof(Md5Digest);
    for (size_t i = 0; good && i < text.size(); i += 2) {
        uint8_t byte = 0;
        const char *end = text.data() + i + 2;
        good = std::from_chars(end - 2, end, byte, 16).ptr == end;
        put(value, byte);
    }
    return good;
}

// What an element of the text is: one behind each separator, but none in an empty text.
template <class Put>
bool put_each(std::string &value, std::string text, char separator, Put put_element)
{
    const char *rest = text.empty() ? nullptr : text.c_str();
    bool good = true;
    while (good && rest != nullptr) {
        text = std::string(rest);
        const std::string element = cut(text, separator, rest);
        good = put_element(value, element);
    }
    return good;
}

bool put_value(std::string &value, ConfigForm form, const std::string &text)
{
    switch (form) {
    case FORM_U32:
        return put_number<uint32_t>(value, text);
    case FORM_U16:
        return put_number<uint16_t>(value, text);
    case FORM_TEXT:
        value = text;
        return true;
    case FORM_IPV4:
    case FORM_SERVER_ADDRESS:
        return put_ipv4(value, text);
    case FORM_IP_SETTINGS:
        return put_each(value, text, '/', put_ipv4) && value.size() == 3 * sizeof(Ipv4);
    case FORM_MAC_LIST:
        return put_each(value, text, ',', put_mac);
    case FORM_HOST_LIST:
        return put_each(value, text, ',', put_host);
    case FORM_PASSWORD_DIGEST:
        return put_digest(value, text);
    case FORM_DATA_RATE:
        return put_rate(value, text);
    }
    return false;
}

// --- Paths ---------------------------------------------------------------------------------------

// Turns "radio[0].tx_power" into the path of the settings' tables, and the positions in it.
bool parse_path(std::string_view text, std::string &path, std::string &index)
{
    path = text.starts_with("wtp_cfg.") ? "" : "wtp_cfg.";
    for (size_t open = text.find('['); open != std::string_view::npos; open = text.find('[')) {
        const size_t close = text.find(']', open);
        uint8_t position = 0;
        if (close == std::string_view::npos ||
            !take_number(std::string(text.substr(open + 1, close - open - 1)).c_str(), position))
            return false;
        index += static_cast<char>(position);
        path += std::string(text.substr(0, open)) + "[]";
        text.remove_prefix(close + 1);
    }
    path += text;
    return true;
}

// The row of a path in either kind's table, or null.
const ConfigKey *find_key(const std::string &path)
{
    const ConfigKey *row = config_key_find(ACCESS_POINT_KEYS, path);
    return row != nullptr ? row : config_key_find(SWITCH_KEYS, path);
}

// A list that is one setting goes by the name of its array, and so does an array's length.
bool parse_alteration(const char *text, Alteration &made)
{
    std::string given(text), path;
    const char *value = nullptr;
    if (!parse_path(cut(given, '=', value), path, made.index) || value == nullptr)
        return false;
    const ConfigKey *key = find_key(path), *list = find_key(path + "[]");
    const ConfigArray *array = config_array_find(path + "[]");
    if (key == nullptr || key->element_size() > 0)
        key = list != nullptr && list->element_size() > 0 ? list : nullptr;
    if (key == nullptr && array == nullptr)
        return false;
    made.path = key != nullptr ? key->path : array->path;
    return put_value(made.value, key != nullptr ? key->form : FORM_U32, value);
}

bool parse_refusal(const char *text, ConfigAnswer &refusal)
{
    std::string given(text);
    const char *message = nullptr;
    const std::string code = cut(given, ':', message);
    if (message == nullptr || !take_number<uint8_t>(code.c_str(), 1, UINT8_MAX, refusal.code))
        return false;
    refusal.message = message;
    return refusal.message.size() <= UINT8_MAX;
}

bool parse_seconds(const char *text, std::optional<double> &seconds)
{
    return take_number(text, seconds.emplace()) && *seconds > 0;
}

} // namespace

bool parse_config_course(std::string_view how, ConfigCourse &course)
{
    std::string given(how);
    const char *rest = nullptr;
    const std::string what = cut(given, ':', rest);
    if (rest == nullptr) {
        course.loses_reply = true;
        return what == "lose";
    }
    if (what == "refuse")
        return parse_refusal(rest, course.refusal.emplace());
    if (what == "alter")
        return parse_alteration(rest, course.alterations.emplace_back());
    if (what == "late")
        return parse_seconds(rest, course.late);
    if (what == "offline" && rest == std::string_view("never")) {
        course.outage = std::numeric_limits<double>::infinity();
        return true;
    }
    return what == "offline" && parse_seconds(rest, course.outage);
}
