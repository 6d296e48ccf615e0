// SPDX-License-Identifier: MIT
// The formats, one row each at the end of the file that writes it.
#pragma once

#include "devices.h"

struct Format {
    const char *name; // one of EXPORT_FORMATS
    uint32_t filter;  // what it needs of the devices
    void (*write)(Devices &devices, const ExportSettings &settings);
};

extern const Format JSON_FORMAT, NDJSON_FORMAT, CFG_FORMAT, CSV_FORMAT, PROMETHEUS_FORMAT,
    DOT_FORMAT;
