// SPDX-License-Identifier: MIT
// make_cfg: a configuration file, on standard output, that holds every setting of an access point
// with 2 radios of 8 WLANs, but for its password.
#include "config/config_keys.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Rows = std::vector<const ConfigKey *>;

void print_string(const ConfigKey &row, int position)
{
    const std::string digit = std::to_string(position + 1);
    std::string text;
    switch (row.form) {
    case FORM_IPV4:
    case FORM_SERVER_ADDRESS:
        text = "192.168.10." + digit;
        break;
    case FORM_IP_SETTINGS:
        text = "192.168.10." + digit + "/255.255.255.0/192.168.10.254";
        break;
    case FORM_DATA_RATE:
        text = "VHTMCS9";
        break;
    case FORM_MAC_LIST:
        text = "02:00:5E:10:00:0" + digit;
        break;
    default:
        text = "setting " + digit + " of the access point";
        if (row.max > 0)
            text.resize(std::min(text.size(), static_cast<size_t>(row.max)));
    }
    printf("\"%s\"", text.c_str());
}

void print_scalar(const ConfigKey &row, int position)
{
    if (row.kind() == json_integer)
        printf("%d", std::max(row.min, std::min(row.max, 1812)));
    else
        print_string(row, position);
}

// Prints the value whose path is the first `length` bytes of all the rows' paths.
void print_value(const Rows &rows, size_t length, int position)
{
    const std::string_view path = rows[0]->path;
    if (length == path.size()) {
        print_scalar(*rows[0], position);
    } else if (path[length] == '[') {
        const size_t dot = path.substr(0, length).rfind('.');
        const std::string_view name = path.substr(dot + 1, length - dot - 1);
        const int elements = name == "radio" ? 2 : name == "wlan" ? 8 : 4;
        for (int i = 0; i < elements; i++) {
            putchar(i == 0 ? '[' : ',');
            print_value(rows, length + 2, i);
        }
        putchar(']');
    } else {
        const size_t start = length == 0 ? 0 : length + 1;
        std::vector<std::string_view> printed;
        for (const ConfigKey *first : rows) {
            const size_t end = std::min(first->path.find_first_of(".[", start), first->path.size());
            const std::string_view name = first->path.substr(start, end - start);
            if (std::find(printed.begin(), printed.end(), name) != printed.end())
                continue;
            Rows below;
            for (const ConfigKey *row : rows)
                if (row->path.substr(0, end) == first->path.substr(0, end) &&
                    (row->path.size() == end || row->path[end] == '.' || row->path[end] == '['))
                    below.push_back(row);
            printf("%c\"%.*s\":", printed.empty() ? '{' : ',', static_cast<int>(name.size()),
                   name.data());
            print_value(below, end, position);
            printed.push_back(name);
        }
        putchar('}');
    }
}

} // namespace

int main()
{
    Rows rows;
    for (const ConfigKey *row = ACCESS_POINT_KEYS; !row->path.empty(); row++)
        if (row->form != FORM_PASSWORD_DIGEST)
            rows.push_back(row);
    print_value(rows, 0, 0);
    putchar('\n');
    return fflush(stdout) == 0 ? 0 : 1;
}
