// SPDX-License-Identifier: MIT
#include "common/command_line.h"

#include "common/output_file.h"
#include "common/plain_text.h"
#include "util/descriptors.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <getopt.h>
#include <new>
#include <unistd.h>

enum : int {
    OPERAND = 1,
    OPT_HELP = 'h',
    OPT_VERSION = 'v',
    OPT_FIRST = 256
}; // those of the table from here

static constexpr OptionText VERSION = {"version", nullptr, "print the version"};
static constexpr OptionText HELP = {"help", nullptr, "print this text"};

static std::string left_column(const OptionText &row)
{
    std::string text = std::string(row.name == HELP.name ? "  -h, --" : "  --") + row.name;
    if (row.argument != nullptr)
        text += std::string(" ") + row.argument;
    return text;
}

static void print_help(const ProgramInfo &program, std::span<const OptionText> options)
{
    OutputFile out("-", 0);
    out.put("usage: ");
    out.put(program.name);
    out.put(" [OPTION]...");
    if (*program.operands != '\0')
        out.put(std::string(" ") + program.operands);
    out.put("\n");
    out.put(program.summary);
    out.put("\n");
    std::vector<OptionText> rows(options.begin(), options.end());
    const auto first_heading = std::find_if(
        rows.begin(), rows.end(), [](const OptionText &row) { return row.heading != nullptr; });
    rows.insert(first_heading, {VERSION, HELP});
    size_t width = 0;
    for (const OptionText &row : rows)
        width = std::max(width, left_column(row).size() + 2);
    for (const OptionText &row : rows) {
        std::string line = left_column(row);
        line.resize(width, ' ');
        if (row.heading != nullptr)
            out.put(std::string("\n") + row.heading + "\n");
        out.put(line + row.help +
                (row.initial != nullptr ? std::string(" (") + row.initial + ")\n" : "\n"));
    }
    out.finish();
}

static void print_version(const ProgramInfo &program)
{
    OutputFile out("-", 0);
    out.put(std::string(program.name) + " " ZOV_VERSION "\n");
    out.finish();
}

// getopt_long(3) says nothing by itself: a word it refuses is argv[optind - 1].
[[noreturn]] static void refuse(int answer, const char *word)
{
    const std::string text(word);
    if (answer == ':')
        throw UsageError(text + " requires an argument");
    if (text.rfind("--", 0) == 0 && text.find('=') != std::string::npos && optopt != 0)
        throw UsageError(text.substr(0, text.find('=')) + " takes no argument");
    throw UsageError("unknown option '" + text + "', see --help");
}

static std::string expectation(const OptionText &row)
{
    if (row.values != nullptr)
        return std::string(", expected one of: ") + row.values;
    return row.expected != nullptr ? std::string(", expected ") + row.expected : std::string();
}

bool read_command_line(int argc, char **argv, const ProgramInfo &program,
                       std::span<const OptionText> options, OptionSink &sink,
                       std::vector<const char *> &operands)
{
    std::vector<option> known;
    for (const OptionText &row : options)
        known.push_back({row.name, row.argument != nullptr ? required_argument : no_argument,
                         nullptr, OPT_FIRST + static_cast<int>(known.size())});
    known.insert(known.end(), {{"help", no_argument, nullptr, OPT_HELP},
                               {"version", no_argument, nullptr, OPT_VERSION},
                               {nullptr, 0, nullptr, 0}});
    for (size_t row = 0; row < options.size(); row++)
        if (options[row].initial != nullptr)
            sink.take(row, options[row].initial);
    opterr = 0;
    for (;;) { // the "-" hands over operands as well, whatever POSIXLY_CORRECT says
        const int code = getopt_long(argc, argv, "-:h", known.data(), nullptr);
        if (code == -1)
            break;
        if (code == OPERAND) {
            operands.push_back(optarg);
            continue;
        }
        if (code == OPT_HELP || code == OPT_VERSION) {
            code == OPT_HELP ? print_help(program, options) : print_version(program);
            return false;
        }
        if (code < OPT_FIRST)
            refuse(code, argv[optind - 1]);
        const auto row = static_cast<size_t>(code - OPT_FIRST);
        if (!sink.take(row, optarg))
            throw UsageError(std::string("--") + options[row].name + ": bad argument '" + optarg +
                             "'" + expectation(options[row]));
    }
    operands.insert(operands.end(), argv + optind, argv + argc);
    return true;
}

// What is written to a standard output that was closed is lost, and that is an error.
static int occupy_descriptors()
{
    const bool is_closed = fcntl(STDOUT_FILENO, F_GETFD) < 0;
    if (occupy_standard_descriptors() != 0)
        return 1;
    const int unwritable = is_closed ? open("/dev/null", O_RDONLY | O_CLOEXEC) : -1;
    if (unwritable >= 0)
        dup2(unwritable, STDOUT_FILENO);
    return 0;
}

int run_program(const ProgramInfo &program, int argc, char **argv, int (*body)(int, char **))
{
    if (occupy_descriptors() != 0)
        return 1;
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
    int status = 1;
    try {
        return body(argc, argv);
    } catch (const UsageError &error) {
        fprintf(stderr, "%s: %s\n", program.name, plain_text(error.what()).c_str());
        status = 2;
    } catch (const Failure &error) {
        fprintf(stderr, "%s: %s\n", program.name, plain_text(error.what()).c_str());
    } catch (const std::bad_alloc &) {
        fprintf(stderr, "%s: out of memory\n", program.name);
    }
    return status;
}
