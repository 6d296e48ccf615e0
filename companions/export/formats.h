// SPDX-License-Identifier: MIT
// The formats, one row each at the end of the file that writes it.
#pragma once

#include "export/devices.h"

#include <sys/stat.h>

// The modes of new files: configurations hold secrets.
enum : mode_t { MODE_SECRET = 0600, MODE_PUBLIC = 0666 };

struct Format {
    uint32_t filter; // what it needs of the devices
    // Returns whether all that it should hold is written; what is not has been reported.
    bool (*write)(Devices &devices, const ExportSettings &settings);

    // Writes that the controller did not answer; null: what was written before stays.
    void (*write_outage)(const ExportSettings &settings) = nullptr;
};

#define DECLARE(name) extern const Format name##_format;
EXPORT_FORMATS(DECLARE)
#undef DECLARE
