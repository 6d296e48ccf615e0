// SPDX-License-Identifier: MIT
// zov-check: checks configuration files without a controller.
#include "check/checker.h"
#include "check/options.h"

static int run(int argc, char **argv)
{
    CheckSettings settings;
    std::vector<const char *> names;
    if (!read_command_line(argc, argv, CHECK_PROGRAM, CHECK_OPTIONS, settings, names))
        return 0;
    if (names.empty())
        throw UsageError("no file to check, see --help");
    Checker checker(settings.kind(), settings.items);
    bool good = true;
    for (const char *name : names) {
        good &= checker.check(name);
        if (settings.items)
            checker.print_items(names.size() > 1 ? name : nullptr);
    }
    return good ? 0 : 1;
}

int main(int argc, char **argv)
{
    return run_program(CHECK_PROGRAM, argc, argv, run);
}
