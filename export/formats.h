// SPDX-License-Identifier: MIT
// The formats, one row each at the end of the file that writes it.
#pragma once

#include "devices.h"

struct Format {
    const char *name;
    uint32_t filter; // what it needs of the devices
    void (*write)(Devices &devices, const ExportSettings &settings);
};

extern const Format JSON_FORMAT, NDJSON_FORMAT, CFG_FORMAT, CSV_FORMAT, PROMETHEUS_FORMAT,
    DOT_FORMAT;

// Throws UsageError when a list, joined by commas, names what is no column.
void check_csv_columns(const char *list);
