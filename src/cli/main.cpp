// SPDX-License-Identifier: MIT
// zov COMMAND [--option [ARG]]...: collects the options, opens the session, runs the command.
#include "cli/command_table.h"
#include "cli/options.h"
#include "proto/session.h"
#include "util/output.h"

#include <cstdlib>
#include <cstring>

struct Settings {
    const char *address = "127.0.0.1";
    int port = 1235;
};

// Reports the option that getopt_long refused. It answers ':' for a missing argument (the option
// string says so) with the option's code in optopt. With '?' optopt is the code of a long option
// that takes no argument but was given one, the character of a single-dash option, or 0.
static int refuse_option(int answer, char **argv)
{
    if (answer == ':')
        return fail("ERROR: Option --%s requires an argument.\n", option_name(optopt));
    if (optopt >= 0x20 && optopt <= 0x7E)
        return fail("ERROR: Unknown option -%c.\n", optopt);

    const char *word = argv[optind - 1];
    const bool is_long = strncmp(word, "--", 2) == 0;
    const char *name = option_name(optopt);
    if (optopt != 0 && is_long && strchr(word, '=') != nullptr && name != nullptr)
        return fail("ERROR: Option --%s doesn't take an argument.\n", name);
    // A single-dash word whose character is not its last is still the next one.
    const bool is_short = word[0] == '-' && word[1] != '\0' && !is_long;
    if (optopt != 0 && !is_short)
        word = argv[optind];
    return fail("ERROR: Unknown option `%s'.\n", word);
}

static int collect_options(int argc, char **argv, Settings &settings, OptArgList &opts)
{
    opterr = 0;
    for (;;) {
        const int code = getopt_long(argc, argv, ":", OPTION_TABLE, nullptr);
        switch (code) {
        case -1:
            return 0;
        case OPT_ACSERVER:
            settings.address = optarg;
            break;
        case OPT_ACPORT:
            settings.port = atoi(optarg);
            break;
        case ':':
        case '?':
            return refuse_option(code, argv);
        default:
            if (opts.count == OPT_ARG_MAX)
                return fail("ERROR: Too many arguments\n");
            opts.rows[opts.count++] = {code, optarg};
        }
    }
}

static int run(int argc, char **argv)
{
    if (argc < 2) {
        print_usage(argv[0]);
        return 1;
    }
    const CommandSpec *command = find_command(argv[1]);
    if (command == nullptr)
        return fail("ERROR: Wrong command specified '%s'\n", argv[1]);

    Settings settings;
    OptArgList opts;
    static AcSession session; // its buffers are too large for the stack
    if (collect_options(argc, argv, settings, opts) != 0 ||
        ac_connect(session, settings.address, settings.port) != 0)
        return 1;
    const int status = command->handler(session, opts);
    standard_output.flush(); // a controller that is gone may end the program at the goodbye
    ac_disconnect(session);
    return status;
}

int main(int argc, char **argv)
{
    const int status = run(argc, argv);
    standard_output.flush();
    return status;
}
