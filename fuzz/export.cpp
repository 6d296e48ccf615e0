// SPDX-License-Identifier: MIT
// Fuzz target: the reply to a list request, in every format of zov-export. The first byte chooses
// the format. JSON is valid, and what is for people or programs to read as text is UTF-8.
#include "common/connection.h"
#include "common/failure.h"
#include "common/utf8.h"
#include "export/formats.h"
#include "fuzz/fuzz.h"

#include <fcntl.h>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

static Input reply;

// The controller: the input.
struct Connection::Session {};
Connection::Connection(const Endpoint &endpoint) : endpoint_(endpoint) {}
Connection::~Connection() = default;
void Connection::fetch(WtpList &list, uint32_t, const MacList &)
{
    ByteSource source;
    source.at = reply.at;
    source.end = reply.at + reply.size;
    source.messages.take = [](void *, Cause, int, const char *, va_list) {};
    if (receive_wtp_list(source, list) != 0)
        throw Failure("no reply");
}
std::string controller_name(const Endpoint &)
{
    return "input";
}

static const Format *const FORMATS[] = {&json_format,  &ndjson_format,     &cfg_format,
                                        &csv_format,   &prometheus_format, &dot_format,
                                        &table_format, &macs_format};

static bool is_json(std::string_view text)
{
    return nlohmann::json::accept(text.begin(), text.end());
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const int output = [] {
        const int file = memfd_create("output", MFD_CLOEXEC);
        dup2(file, STDOUT_FILENO);
        return file;
    }();
    PROMISE(output >= 0);
    reply = {data, size};
    const uint8_t choice = reply.byte();
    const Format *format = FORMATS[choice % std::size(FORMATS)];
    ExportSettings settings;
    settings.partial = true;
    static constexpr const char *METRICS[] = {nullptr, "fleet", "device", "all"};
    settings.metrics = METRICS[choice / std::size(FORMATS) % std::size(METRICS)];
    PROMISE(ftruncate(output, 0) == 0 && lseek(output, 0, SEEK_SET) == 0);
    try {
        Devices devices(settings, format->filter);
        format->write(devices, settings);
    } catch (const Failure &) {
        return 0;
    }
    std::string text(static_cast<size_t>(lseek(output, 0, SEEK_END)), '\0');
    PROMISE(pread(output, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()));
    PROMISE(is_utf8(text));
    if (format == &json_format)
        PROMISE(is_json(text));
    if (format == &ndjson_format)
        for (size_t at = 0, end; at < text.size(); at = end + 1) {
            end = text.find('\n', at);
            PROMISE(end != std::string::npos &&
                    is_json(std::string_view(text).substr(at, end - at)));
        }
    return 0;
}
