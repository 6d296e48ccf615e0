// SPDX-License-Identifier: MIT
// make_reply DEVICES [brief]: the reply to a device list request, on standard output. Access points
// with 2 radios of 8 WLANs; `brief` leaves out their details and their configuration.
#include "device/wtp_layout.h"
#include "util/byte_order.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace {

// What a text field holds; the others are empty. A number sign becomes a digit.
constexpr struct {
    std::string_view name, text;
} TEXTS[] = {
    {"model", "AP-2800i"},
    {"sn", "S21400######"},
    {"sw_ver", "2.4.10.1182"},
    {"cw_ver", "1.6.3"},
    {"name", "building 7, floor 3, room ######"},
    {"location", "north campus"},
    {"admin", "admin"},
    {"sku", "EU"},
    {"ssid", "Campus"},
    {"wpa.passphrase", "staple-7"},
    {"portal.userurl", "/portal"},
    {"mesh.id", "backhaul"},
    {"mesh.wpa_key", "backhaul-key"},
};

// What a number field holds, for the names that end so; the others are flags and hold 1.
constexpr struct {
    std::string_view end;
    uint32_t base, spread;
} NUMBERS[] = {
    {"_time", 1700000000, 10000000},
    {"uptime", 0, 10000000},
    {"_pkt", 0, 100000000},
    {"_bytes", 0, 4000000000},
    {"mem.total", 262144, 1},
    {"mem.used", 100000, 100000},
    {"port", 1812, 1},
    {"vlan", 0, 4094},
    {"channel.val", 36, 100},
    {"session_timeout", 3600, 1},
    {"group_key_int", 3600, 1},
    {"interval", 600, 1},
    {"sec_mode", 4, 1},
    {"limit", 0, 100000},
    {"threshold", 2346, 1},
    {"maxbytes", 65535, 1},
    {"state", 5, 1},
};

// The visitor of wtp_layout.h that generates a device and writes it.
class RecordWriter {
public:
    explicit RecordWriter(bool brief) : brief_(brief) {}

    template <class Field> void operator()(const char *name, Field &field)
    {
        if constexpr (std::is_integral_v<Field>)
            field = static_cast<Field>(number(name));
        else
            for (size_t i = 0; i < sizeof field; i++)
                reinterpret_cast<uint8_t *>(&field)[i] = static_cast<uint8_t>(next(250) + 2);
        put(field);
    }
    void operator()(const char *, CfgCap &) { put(CfgCap{{1, 1, 15, 0, 1, 1, 1, 0, 1}}); }
    void operator()(const char *name, std::string_view &)
    {
        std::string text;
        for (const auto &row : TEXTS)
            if (row.name == name)
                text = row.text;
        for (char &c : text)
            if (c == '#')
                c = static_cast<char>('0' + next(10));
        put(static_cast<uint16_t>(text.size()));
        fwrite(text.data(), 1, text.size(), stdout);
    }
    void hostname(const char *name, std::string_view &text) { (*this)(name, text); }

    bool present(Section section)
    {
        const bool there = section != Section::stations && !brief_;
        put(static_cast<uint8_t>(there));
        return there;
    }
    bool make(WtpCfg *&part)
    {
        part = &(cfg_ = WtpCfg());
        return true;
    }
    template <class Int, class Row> Int count(const char *, ArrayView<Row> &, CountOf<Int>)
    {
        return 0;
    }
    template <class Row> void counted_rows(const char *, ArrayView<Row> &, uint32_t) {}
    template <class Int, class Row> void rows(const char *name, ArrayView<Row> &, CountOf<Int>)
    {
        const int length = strcmp(name, "radio") == 0 ? 2 : strcmp(name, "wlan") == 0 ? 8 : 0;
        put(static_cast<Int>(length));
        for (int i = 0; i < length; i++) {
            Row row;
            visit_fields(*this, row);
        }
    }

private:
    template <class Field> static void put(const Field &field)
    {
        uint8_t wire[sizeof field];
        if constexpr (std::is_integral_v<Field>)
            to_big_endian(wire, field);
        else
            memcpy(wire, &field, sizeof field);
        fwrite(wire, 1, sizeof wire, stdout);
    }

    uint32_t number(std::string_view name)
    {
        if (name == "wtp_type")
            return DEVICE_ACCESS_POINT;
        for (const auto &row : NUMBERS)
            if (name.ends_with(row.end))
                return row.base + next(row.spread);
        return 1;
    }

    uint32_t next(uint32_t limit)
    {
        random_ = random_ * 6364136223846793005U + 1442695040888963407U;
        return static_cast<uint32_t>((random_ >> 32) * limit >> 32);
    }

    bool brief_;
    WtpCfg cfg_;
    uint64_t random_ = 1;
};

} // namespace

int main(int argc, char **argv)
{
    if (argc < 2)
        return 2;
    RecordWriter wire(argc > 2 && strcmp(argv[2], "brief") == 0);
    for (int i = 0; i < atoi(argv[1]); i++) {
        WtpRecord device;
        putchar(0);
        visit_fields(wire, device);
    }
    putchar(1);
    return fflush(stdout) == 0 ? 0 : 1;
}
