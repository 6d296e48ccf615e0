// SPDX-License-Identifier: MIT
#include "documents/meaning.h"

#include "documents/items.h"
#include "report/format.h"
#include "util/byte_order.h"

std::string shown_value(const ConfigKey &row, std::string_view bytes)
{
    switch (row.form) {
    case FORM_TEXT:
        return std::string(bytes);
    case FORM_HOST_LIST:
        return std::string(bytes.substr(0, bytes.find('\0')));
    case FORM_DATA_RATE: {
        const auto code = from_big_endian<int32_t>(reinterpret_cast<const uint8_t *>(bytes.data()));
        return code < 0 ? std::to_string(code) : data_rate_text(code); // of no rate: as a number
    }
    case FORM_U32:
    case FORM_U16:
    case FORM_IPV4:
    case FORM_SERVER_ADDRESS:
    case FORM_IP_SETTINGS:
    case FORM_MAC_LIST:
    case FORM_PASSWORD_DIGEST:
        break;
    }
    return value_text(&row, bytes);
}

// Without the zeros that numbers begin with, in lower case.
static std::string without_zeros(std::string_view text)
{
    std::string made;
    bool begins = true;
    for (size_t i = 0; i < text.size(); i++) {
        const auto c = static_cast<unsigned char>(text[i]);
        const bool goes_on =
            i + 1 < text.size() && isxdigit(static_cast<unsigned char>(text[i + 1]));
        if (!(begins && c == '0' && goes_on))
            made += static_cast<char>(tolower(c));
        begins = isxdigit(c) == 0 || (begins && c == '0' && goes_on);
    }
    return made;
}

// A rate without the zeros at the end of the fraction that one with a unit can have.
static std::string plain_rate(std::string_view text)
{
    if (!text.ends_with('M'))
        return without_zeros(text);
    const size_t point = std::min(text.find('.'), text.size() - 1);
    std::string fraction(text.substr(point, text.size() - 1 - point));
    while (fraction.size() > 1 && fraction.ends_with('0'))
        fraction.pop_back();
    if (fraction == ".")
        fraction.clear();
    return without_zeros(text.substr(0, point)) + fraction + "m";
}

bool mean_the_same(const ConfigKey &row, std::string_view text, std::string_view shown)
{
    switch (row.form) {
    case FORM_PASSWORD_DIGEST:
        return true;
    case FORM_TEXT:
    case FORM_HOST_LIST:
        return text == shown;
    case FORM_DATA_RATE:
        return plain_rate(text) == plain_rate(shown);
    case FORM_SERVER_ADDRESS:
        return without_zeros(text.empty() ? "0.0.0.0" : text) == without_zeros(shown);
    case FORM_U32:
    case FORM_U16:
    case FORM_IPV4:
    case FORM_IP_SETTINGS:
    case FORM_MAC_LIST:
        break;
    }
    return without_zeros(text) == without_zeros(shown);
}
