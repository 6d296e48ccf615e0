// SPDX-License-Identifier: MIT
// What reads JSON strictly only to see whether it is JSON: takes everything, and stops at a fault.
#pragma once

#include <nlohmann/json.hpp>

class JsonAcceptor : public nlohmann::json_sax<nlohmann::json> {
public:
    bool null() override { return true; }
    bool boolean(bool) override { return true; }
    bool number_integer(number_integer_t) override { return true; }
    bool number_unsigned(number_unsigned_t) override { return true; }
    bool number_float(number_float_t, const string_t &) override { return true; }
    bool string(string_t &) override { return true; }
    bool binary(binary_t &) override { return true; }
    bool key(string_t &) override { return true; }
    bool start_object(size_t) override { return true; }
    bool start_array(size_t) override { return true; }
    bool end_object() override { return true; }
    bool end_array() override { return true; }
    bool parse_error(size_t, const std::string &, const nlohmann::detail::exception &) override
    {
        return false;
    }
};
