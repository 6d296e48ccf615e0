// SPDX-License-Identifier: MIT
// zov-export: the controller's devices in formats that other programs read.
#include "common/stop.h"
#include "export/formats.h"

#include <memory>

enum : int { STATUS_SIGNAL = 128 };

static const Format *find_format(std::string_view name)
{
#define FIND(known)                                                                                \
    if (name == #known)                                                                            \
        return &known##_format;
    EXPORT_FORMATS(FIND)
#undef FIND
    return nullptr; // which the option has refused
}

static const Format &check_settings(const ExportSettings &settings,
                                    const std::vector<const char *> &operands)
{
    if (!operands.empty())
        throw UsageError(std::string("unexpected argument '") + operands[0] + "'");
    if (settings.format == nullptr)
        throw UsageError("--format is missing, see --help");
    const Format &format = *find_format(settings.format);
    if (settings.output != nullptr && settings.directory != nullptr)
        throw UsageError("--output and --directory exclude each other");
    if (settings.directory != nullptr && &format != &cfg_format)
        throw UsageError("--directory is for --format cfg");
    if (settings.metrics != nullptr && &format != &prometheus_format)
        throw UsageError("--metrics is for --format prometheus");
    if (settings.around != nullptr && &format != &dot_format)
        throw UsageError("--around is for --format dot");
    if (settings.partial && &format != &cfg_format)
        throw UsageError("--partial is for --format cfg");
    if (settings.columns != nullptr && &format != &csv_format)
        throw UsageError("--columns is for --format csv");
    return format;
}

static std::unique_ptr<Devices> fetch(const ExportSettings &settings, const Format &format)
{
    try {
        return std::make_unique<Devices>(settings, format.filter);
    } catch (const Failure &) {
        if (format.write_outage != nullptr)
            format.write_outage(settings);
        throw;
    }
}

static int run(int argc, char **argv)
{
    ExportSettings settings;
    std::vector<const char *> operands;
    if (!read_command_line(argc, argv, EXPORT_PROGRAM, EXPORT_OPTIONS, settings, operands))
        return 0;
    const Format &format = check_settings(settings, operands);
    const bool has_files = settings.directory != nullptr || settings.output != nullptr;
    if (has_files) { // whose temporary names are removed before a signal ends it
        watch_for_stop();
        stop_at_first(true);
    }
    try {
        const std::unique_ptr<Devices> devices = fetch(settings, format);
        const bool whole = format.write(*devices, settings);
        return devices->all_found() && whole && !devices->has_repeated() ? 0 : 1;
    } catch (const StopAtOnce &stop) {
        return STATUS_SIGNAL + stop.signal;
    }
}

int main(int argc, char **argv)
{
    return run_program(EXPORT_PROGRAM, argc, argv, run);
}
