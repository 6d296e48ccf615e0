// SPDX-License-Identifier: MIT
// What a command line of zov-export asks for.
#pragma once

#include "connection.h"
#include "util/mac.h"

struct Format;

struct ExportSettings : Place {
    const Format *format = nullptr;
    MacList macs;               // these devices; none: all
    const char *name = nullptr; // and of these the ones with such a name
    const char *output = nullptr;
    const char *directory = nullptr;
    const char *columns = nullptr; // of csv
};
