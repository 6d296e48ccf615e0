// SPDX-License-Identifier: MIT
// The command lines of the companion tools and ac-sim: long options only, from one table for each
// program, which help, completion and the manual's test read as well.
#pragma once

#include "common/failure.h"

#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// What is the same for all settings.
struct OptionText {
    const char *name;
    const char *argument;           // its name in the help; null for an option that takes none
    const char *help;               // one line
    const char *values = nullptr;   // those that are known, separated by spaces; null: any
    bool repeatable = false;        // may be given more than once, to add something
    const char *expected = nullptr; // what a bad argument should have been; null: see values
    const char *heading = nullptr;  // a line above it in the help
    const char *initial = nullptr;  // its argument where it is not given; null: none
    const char *meanings = nullptr; // of the values, joined by commas, for completion; null: plain
};

// A row of a program's table. `take` keeps the argument (null if there is none) in the settings;
// false when it does not fit.
template <class Settings> struct Option : OptionText {
    bool (*take)(const char *argument, Settings &settings);
};

struct ProgramInfo {
    const char *name;
    const char *operands; // as the first help line shows them behind the options; "" for none
    const char *summary;  // what the program does, in lines that end with \n
};

// Reads a command line. Calls take(row, argument) for each initial argument, then for each option;
// throws UsageError when it is false, and for all that getopt_long(3) refuses. Prints the help or
// the version when asked for and returns false: there is nothing else to do. Operands are appended
// to `operands`.
struct OptionSink {
    virtual bool take(size_t row, const char *argument) = 0;

protected:
    ~OptionSink() = default;
};
bool read_command_line(int argc, char **argv, const ProgramInfo &program,
                       std::span<const OptionText> options, OptionSink &sink,
                       std::vector<const char *> &operands);

template <class Settings, size_t N>
bool read_command_line(int argc, char **argv, const ProgramInfo &program,
                       const Option<Settings> (&options)[N], Settings &settings,
                       std::vector<const char *> &operands)
{
    struct Sink : OptionSink {
        const Option<Settings> *options;
        Settings &settings;
        Sink(const Option<Settings> *rows, Settings &to) : options(rows), settings(to) {}
        bool take(size_t row, const char *argument) override
        {
            return options[row].take(argument, settings);
        }
    } sink(options, settings);
    const std::vector<OptionText> texts(options, options + N);
    return read_command_line(argc, argv, program, texts, sink, operands);
}

// The whole text as a number that the type can hold, or one from `low` to `high`.
template <class Int> bool take_number(const char *text, Int low, Int high, Int &number)
{
    const char *end = text + strlen(text);
    const auto [last, error] = std::from_chars(text, end, number);
    return error == std::errc() && last == end && end != text && number >= low && number <= high;
}

template <class Int> bool take_number(const char *text, Int &number)
{
    using Limits = std::numeric_limits<Int>;
    return take_number(text, Limits::lowest(), Limits::max(), number);
}

// Whether a word is one of those in a text that spaces separate.
constexpr bool is_word_of(std::string_view word, std::string_view words)
{
    while (!words.empty()) {
        const size_t space = words.find(' ');
        if (words.substr(0, space) == word)
            return true;
        words.remove_prefix(space == std::string_view::npos ? words.size() : space + 1);
    }
    return false;
}

inline bool take_word(const char *text, const char *words, const char *&kept)
{
    kept = text;
    return is_word_of(text, words);
}

// A whole or fractional number of seconds.
inline bool take_seconds(const char *text, double low, double high, double &seconds)
{
    return take_number<double>(text, low, high, seconds);
}

// For options that only keep their argument, or that they were given; both return true.
inline bool take_text(const char *text, const char *&kept)
{
    kept = text;
    return true;
}

// A text that is not empty.
inline bool take_name(const char *text, const char *&kept)
{
    kept = text;
    return *text != '\0';
}

inline bool take_flag(bool &given)
{
    given = true;
    return true;
}

// Runs a program: body(argc, argv) gives the exit status, and a Failure or UsageError that it
// throws becomes a message and 1 or 2. Closed standard descriptors are filled with /dev/null first,
// and a pipe that nobody reads and a limit of file sizes are errors like any other.
int run_program(const ProgramInfo &program, int argc, char **argv, int (*body)(int, char **));
