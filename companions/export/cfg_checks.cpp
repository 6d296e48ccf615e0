// SPDX-License-Identifier: MIT
#include "export/cfg_checks.h"

#include "config/config_value.h"
#include "export/devices.h"
#include "export/text.h"

#include <algorithm>
#include <cstring>

std::vector<std::string> texts_of(const ArrayView<Mac> &macs)
{
    std::vector<std::string> texts;
    for (const Mac &mac : macs)
        texts.push_back(mac_name(mac));
    return texts;
}

std::vector<std::string> texts_of(const ArrayView<HostSlot> &hosts)
{
    std::vector<std::string> texts;
    for (const HostSlot &host : hosts)
        texts.emplace_back(host.text, strnlen(host.text, sizeof host.text));
    return texts;
}

static bool has_equal(std::vector<std::string> texts)
{
    std::sort(texts.begin(), texts.end());
    return std::adjacent_find(texts.begin(), texts.end()) != texts.end();
}

constexpr const char *NO_UTF8 = "is no UTF-8, which JSON cannot hold";

std::string why_unsendable(const ConfigKey &row, std::string_view text)
{
    const auto size = static_cast<uint32_t>(text.size());
    if (size < static_cast<uint32_t>(row.min) || size > static_cast<uint32_t>(row.max))
        return std::to_string(size) + " bytes, " + std::to_string(row.min) + " to " +
               std::to_string(row.max) + " can be sent";
    return is_utf8(text) ? "" : NO_UTF8;
}

std::string why_list_unsendable(const ConfigKey &row, const std::vector<std::string> &elements,
                                DeviceKind kind)
{
    if (elements.size() > row.elements_max())
        return std::to_string(elements.size()) + " elements, " +
               std::to_string(row.elements_max()) + " can be sent";
    if (row.has_distinct_elements(kind) && has_equal(elements))
        return "has an element twice";
    for (const std::string &element : elements) {
        Mac mac;
        if (row.form == FORM_MAC_LIST && (!parse_mac(element.c_str(), mac) || mac.is_group()))
            return element + " is no device's address";
        std::string why = why_unsendable(row, element);
        if (!why.empty())
            return why;
    }
    return "";
}

bool is_rate_of(const char *text, int64_t code)
{
    int read = 0;
    return parse_data_rate(text, read) && read == code;
}
