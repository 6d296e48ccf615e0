// SPDX-License-Identifier: MIT
// How the configurations of a device go on that a test has told to misbehave.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The answer about one device: a result code, and a text if there is one.
struct ConfigAnswer {
    uint8_t code = 0;
    std::string message;
};

// A setting that is given another value.
struct Alteration {
    std::string_view path; // as in the settings' table
    std::string index;     // the positions of the array elements, a byte each
    std::string value;     // as in an item
};

struct ConfigCourse {
    std::optional<ConfigAnswer> refusal; // of every request
    std::vector<Alteration> alterations; // behind the items of each request
    std::optional<double> late;          // seconds until the items are stored
    std::optional<double> outage;        // seconds that it causes; infinity: it does not end
    bool loses_reply = false;            // to the first request
};

// Reads one HOW of --config, such as "late:2.5", and adds it to the course. False when it is none.
bool parse_config_course(std::string_view how, ConfigCourse &course);
