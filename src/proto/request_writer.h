// SPDX-License-Identifier: MIT
// Sends a request: a first visit of its fields counts and refuses what does not fit, a second one
// sends.
//
// Fields gather in the session's buffer, which is sent when it is full and at the end: a request of
// usual size leaves in one packet. Of one that is refused nothing is sent.
#pragma once

#include "proto/requests.h"
#include "proto/session.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

// The visitor that counts.
class RequestSize {
public:
    template <class... Fields> void operator()(const Fields &...fields) { (add(fields), ...); }

    uint64_t bytes = 0;   // of all fields
    size_t addresses = 0; // in the longest list
    size_t counted = 0;   // bytes behind the 16-bit count

private:
    template <class Field> void add(const Field &) { bytes += sizeof(Field); }
    void add(const Macs &macs)
    {
        bytes += sizeof(uint16_t) + macs.size_bytes();
        addresses = std::max(addresses, macs.size());
    }
    void add(const MacCount &) { bytes += sizeof(uint16_t); }
    void add(const MacAddresses &list) { add(list.macs), bytes -= sizeof(uint16_t); }
    void add(const Rest &rest) { bytes += rest.bytes.size(); }
    void add(const Counted<uint8_t> &text) { bytes += sizeof(uint8_t) + text.bytes.size(); }
    void add(const Counted<uint16_t> &text)
    {
        bytes += sizeof(uint16_t) + text.bytes.size();
        counted = text.bytes.size();
    }
};

// The visitor that sends.
class RequestWriter {
public:
    explicit RequestWriter(AcSession &session) : session_(session) {}

    // Returns 0; or 1, with the reason reported.
    template <class Request> int send(Request request)
    {
        RequestSize size;
        request.visit(size);
        if (!begin(Request::CODE, Request::LENGTH, size))
            return 1;
        request.visit(*this);
        flush();
        return failed_ ? 1 : 0;
    }

    template <class... Fields> void operator()(const Fields &...fields) { (put(fields), ...); }

private:
    bool begin(uint8_t code, LengthKind length, const RequestSize &size);
    bool refuse(const char *what, uint64_t number, uint32_t most);

    void put(uint8_t number) { put_bytes(&number, sizeof number); }
    void put(uint16_t number);
    void put(uint32_t number);
    void put(bool flag) { put(static_cast<uint8_t>(flag)); }
    void put(const Mac &mac) { put_bytes(&mac, sizeof mac); }
    void put(const MacCount &count) { put(static_cast<uint16_t>(count.macs.size())); }
    void put(const MacAddresses &list) { put_bytes(list.macs.data(), list.macs.size_bytes()); }
    void put(const Macs &macs)
    {
        put(static_cast<uint16_t>(macs.size()));
        put_bytes(macs.data(), macs.size_bytes());
    }
    void put(const Rest &rest) { put_bytes(rest.bytes.data(), rest.bytes.size()); }
    template <class Int> void put(const Counted<Int> &text)
    {
        put(static_cast<Int>(text.bytes.size()));
        put_bytes(text.bytes.data(), text.bytes.size());
    }
    void put_bytes(const void *from, size_t length);
    void flush();

    AcSession &session_;
    size_t used_ = 0;
    bool failed_ = false;
};

// The same in one call.
template <class Request> int send_request(AcSession &session, const Request &request)
{
    return RequestWriter(session).send(request);
}
