// SPDX-License-Identifier: MIT
// textbook PORT: the device list as a straightforward client fetches it, for comparison. It
// receives every field by itself and prints every member by itself; it prints the members in wire
// order.
#include "device/wtp_layout.h"
#include "proto/session.h"
#include "util/byte_order.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <list>
#include <string_view>
#include <sys/socket.h>

namespace {

class FieldReceiver {
public:
    explicit FieldReceiver(int socket) : socket_(socket) {}

    template <class Field> void operator()(const char *, Field &field)
    {
        receive(&field, sizeof field);
        if constexpr (std::is_integral_v<Field>)
            field = from_big_endian<Field>(&field);
    }
    void operator()(const char *, std::string_view &text)
    {
        const auto length = number<uint16_t>();
        if (length == 0)
            return;
        auto *bytes = static_cast<char *>(malloc(length));
        receive(bytes, length);
        text = {bytes, length};
    }
    void hostname(const char *name, std::string_view &text) { (*this)(name, text); }
    bool present(Section) { return number<uint8_t>() != 0; }
    bool make(WtpCfg *&part)
    {
        part = new WtpCfg();
        return true;
    }
    template <class Int, class Row> Int count(const char *, ArrayView<Row> &, CountOf<Int>)
    {
        return number<Int>();
    }
    template <class Int, class Row> void rows(const char *name, ArrayView<Row> &table, CountOf<Int>)
    {
        counted_rows(name, table, static_cast<uint32_t>(number<Int>()));
    }
    template <class Row> void counted_rows(const char *, ArrayView<Row> &table, uint32_t length)
    {
        if (length > 0)
            table = ArrayView<Row>(malloc(length * sizeof(Row)));
        while (table.size() < length)
            visit_fields(*this, table.append());
    }

    template <class Int> Int number()
    {
        Int number;
        (*this)("", number);
        return number;
    }

private:
    void receive(void *to, size_t length)
    {
        if (recv(socket_, to, length, MSG_WAITALL) != static_cast<ssize_t>(length))
            exit(1);
    }

    int socket_;
};

class MemberPrinter {
public:
    template <class Field> void operator()(const char *name, Field &field)
    {
        if constexpr (std::is_signed_v<Field>)
            printf(",\"%s\":%d", name, int{field});
        else
            printf(",\"%s\":%u", name, unsigned{field});
    }
    void operator()(const char *name, Mac &mac)
    {
        const uint8_t *b = mac.byte;
        printf(",\"%s\":\"%02X:%02X:%02X:%02X:%02X:%02X\"", name, b[0], b[1], b[2], b[3], b[4],
               b[5]);
    }
    void operator()(const char *name, Ipv4 &addr)
    {
        const uint8_t *o = addr.octet;
        printf(",\"%s\":\"%u.%u.%u.%u\"", name, o[0], o[1], o[2], o[3]);
    }
    void operator()(const char *name, std::string_view &text)
    {
        printf(",\"%s\":\"%.*s\"", name, static_cast<int>(text.size()), text.data());
    }
    void operator()(const char *name, HostSlot &host) { printf(",\"%s\":\"%s\"", name, host.text); }
    void operator()(const char *name, CfgCap &cap) { print_bytes(name, cap.flag); }
    void operator()(const char *name, Md5Digest &digest) { print_bytes(name, digest.byte); }
    void hostname(const char *name, std::string_view &text) { (*this)(name, text); }

    bool present(Section section) const { return section != Section::configuration || has_cfg; }
    bool make(const WtpCfg *cfg) { return cfg != nullptr; }
    template <class Int, class Row> Int count(const char *, ArrayView<Row> &table, CountOf<Int>)
    {
        return static_cast<Int>(table.size());
    }
    template <class Int, class Row> void rows(const char *name, ArrayView<Row> &table, CountOf<Int>)
    {
        counted_rows(name, table, table.size());
    }
    template <class Row> void counted_rows(const char *name, ArrayView<Row> &table, uint32_t)
    {
        printf(",\"%s\":[", name);
        for (Row &row : table)
            visit_fields(*this, row);
        printf("]");
    }

    bool has_cfg = false;

private:
    template <size_t N> void print_bytes(const char *name, const uint8_t (&bytes)[N])
    {
        printf(",\"%s\":[", name);
        for (const uint8_t byte : bytes)
            printf("%u,", byte);
        printf("]");
    }
};

} // namespace

int main(int argc, char **argv)
{
    static AcSession session;
    if (argc != 2 || ac_connect(session, AC_ADDRESS, atoi(argv[1])) != 0)
        return 1;
    const uint8_t request[7] = {1, 0, 0, 0, 63, 0, 0};
    send_all(session, request, sizeof request);

    std::list<WtpRecord> devices;
    FieldReceiver receiver(session.socket);
    while (receiver.number<uint8_t>() == 0)
        visit_fields(receiver, devices.emplace_back());
    MemberPrinter printer;
    for (WtpRecord &wtp : devices) {
        printer.has_cfg = wtp.wtp_cfg != nullptr;
        visit_fields(printer, wtp);
    }
    ac_disconnect(session);
    return 0;
}
