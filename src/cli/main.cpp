// SPDX-License-Identifier: MIT
// zov COMMAND [--option [ARG]]...: collects the options, opens the session, runs the command.
#include "cli/command_table.h"
#include "proto/session.h"
#include "util/descriptors.h"
#include "util/output.h"

#include <cstdlib>

struct Settings {
    const char *address = AC_ADDRESS;
    int port = AC_PORT;
};

// Reports the option at `word` that getopt_long refused. It answers ':' for a missing argument (the
// option string says so) with the option's code in optopt. With '?' optopt is the code of a long
// option that takes no argument but was given one, the character of a single-dash option, or 0.
static int refuse_option(int answer, const char *word)
{
    if (answer == ':')
        return fail("ERROR: Option --%s requires an argument.\n", option_name(optopt));
    const bool is_long = word[1] == '-';
    if (!is_long && optopt >= 0x20 && optopt <= 0x7E)
        return fail("ERROR: Unknown option -%c.\n", optopt);
    if (is_long && optopt != 0)
        return fail("ERROR: Option --%s doesn't take an argument.\n", option_name(optopt));
    return fail("ERROR: Unknown option `%s'.\n", word);
}

// The option string's "-" makes getopt_long hand over the words that are no options as well, each
// with code 1 and no row, whatever POSIXLY_CORRECT says: so options count wherever they stand, and
// the word that is read is always argv[optind]. The ":" tells a missing argument from an unknown
// option.
static int collect_options(int argc, char **argv, Settings &settings, OptArgList &opts)
{
    opterr = 0;
    optind = 2;
    for (;;) {
        const char *word = argv[optind]; // null at the end
        int row = -1;
        const int code = getopt_long(argc, argv, "-:", OPTION_TABLE, &row);
        if (code == 1 && row < 0)
            continue;
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
            return refuse_option(code, word);
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
    if (occupy_standard_descriptors() != 0)
        return 1;
    const int status = run(argc, argv);
    standard_output.flush();
    return status;
}
