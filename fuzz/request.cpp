// SPDX-License-Identifier: MIT
// Fuzz target: what a client sends to the simulated controller. Each request is answered or
// refused, whatever came before; what it lists can be read by zov.
#include "device/wtp_list.h"
#include "fuzz/fuzz.h"
#include "sim/controller.h"
#include "sim/request_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    enum : unsigned { REQUESTS_MAX = 64 };
    ControllerOptions options;
    options.fleet = {.aps = 1, .switches = 1, .others = 1, .seed = 1};
    options.max_wtps = 5;
    Controller controller(options);
    std::string_view rest = Input{data, size}.text();
    try {
        for (unsigned count = 0; !rest.empty() && count < REQUESTS_MAX; count++) {
            const std::optional<size_t> length = Controller::request_length(rest);
            if (!length || *length > rest.size())
                break;
            PROMISE(*length > 0);
            const std::string_view request = rest.substr(0, *length);
            rest.remove_prefix(*length);
            if (static_cast<uint8_t>(request[0]) == AcMemoryRequest::CODE)
                continue; // writes a file
            std::string reply;
            controller.answer(request, reply);
            if (static_cast<uint8_t>(request[0]) == WtpListRequest::CODE) {
                ByteSource source;
                source.at = reinterpret_cast<const uint8_t *>(reply.data());
                source.end = source.at + reply.size();
                WtpList list;
                PROMISE(receive_wtp_list(source, list) == 0 && source.available() == 0);
            }
        }
    } catch (const BadRequest &) {
    }
    return 0;
}
