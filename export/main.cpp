// SPDX-License-Identifier: MIT
// zov-export: the controller's devices in formats that other programs read.
#include "options.h"

static void check_settings(const ExportSettings &settings,
                           const std::vector<const char *> &operands)
{
    if (!operands.empty())
        throw UsageError(std::string("unexpected argument '") + operands[0] + "'");
    if (settings.format == nullptr)
        throw UsageError("--format is missing, see --help");
    if (settings.output != nullptr && settings.directory != nullptr)
        throw UsageError("--output and --directory exclude each other");
    if (settings.directory != nullptr && settings.format != &CFG_FORMAT)
        throw UsageError("--directory is for --format cfg");
    if (settings.columns != nullptr && settings.format != &CSV_FORMAT)
        throw UsageError("--columns is for --format csv");
}

static int run(int argc, char **argv)
{
    ExportSettings settings;
    std::vector<const char *> operands;
    if (!read_command_line(argc, argv, EXPORT_PROGRAM, EXPORT_OPTIONS, settings, operands))
        return 0;
    check_settings(settings, operands);
    Devices devices(settings, settings.format->filter);
    settings.format->write(devices, settings);
    return devices.all_found() ? 0 : 1;
}

int main(int argc, char **argv)
{
    return run_program(EXPORT_PROGRAM, argc, argv, run);
}
