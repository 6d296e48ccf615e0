// SPDX-License-Identifier: MIT
// The programs' tables as completion sees them: the rows of zov's commands, and the options.h of
// each other program.
#include "cli/command_table.h"
#include "common/connection.h"
#include "tools/completed_programs.h"
#include "tools/completion.h"

#include <algorithm>
#include <array>
#include <span>

using std::string;
using std::string_view;

namespace {

// The texts of a table. They are copied while the generator is compiled, so that it need not be
// linked with what the rows call.
template <class Settings, size_t N>
constexpr std::array<OptionText, N> texts_of(const Option<Settings> (&rows)[N])
{
    std::array<OptionText, N> texts = {};
    for (size_t i = 0; i < N; i++)
        texts[i] = rows[i];
    return texts;
}

struct ListedProgram {
    ProgramInfo text;
    std::span<const OptionText> options;
};

constexpr Option<Endpoint> PLACE_ROWS[] = {ENDPOINT_OPTIONS};
constexpr auto PLACE_TEXTS = texts_of(PLACE_ROWS);

#define PROGRAM(NAME) constexpr auto NAME##_TEXTS = texts_of(NAME##_OPTIONS);
COMPLETED_PROGRAMS(PROGRAM)
#undef PROGRAM

constexpr ListedProgram PROGRAMS[] = {
#define PROGRAM(NAME) {NAME##_PROGRAM, NAME##_TEXTS},
    COMPLETED_PROGRAMS(PROGRAM)
#undef PROGRAM
};

string text_or_empty(const char *text)
{
    return text == nullptr ? "" : text;
}

string trimmed(string_view text)
{
    const size_t first = text.find_first_not_of(" \t:"), last = text.find_last_not_of(" \t:");
    return first == string_view::npos ? "" : string(text.substr(first, last + 1 - first));
}

Completes kind_of(const OptionText &row)
{
    const string_view argument = row.argument == nullptr ? "" : row.argument;
    const bool list = argument == "LIST";
    if (row.argument == nullptr)
        return Completes::nothing;
    if (row.values != nullptr)
        return list ? Completes::word_list : Completes::words;
    if (argument == "FILE")
        return Completes::file;
    if (argument == "DIR")
        return Completes::folder;
    if (argument == "MAC" || row.name == string_view("exclude"))
        return Completes::mac;
    return list && row.name == string_view("mac") ? Completes::mac_list : Completes::free;
}

CompletedOption option_of(const OptionText &row)
{
    return {row.name,
            text_or_empty(row.argument),
            row.help,
            kind_of(row),
            text_or_empty(row.values),
            row.repeatable,
            text_or_empty(row.meanings)};
}

CompletedProgram program_of(const ListedProgram &listed)
{
    CompletedProgram program;
    program.name = listed.text.name;
    program.operands = string_view(listed.text.operands).starts_with("FILE") ? Completes::file
                                                                             : Completes::nothing;
    program.lines.emplace_back();
    for (const OptionText &row : listed.options)
        program.lines[0].options.push_back(option_of(row));
    program.lines[0].options.push_back(
        {"help", "", "print this text", Completes::nothing, "", false, ""});
    program.lines[0].options.push_back(
        {"version", "", "print the version", Completes::nothing, "", false, ""});
    return program;
}

// --- zov -----------------------------------------------------------------------------------------

// The words behind "N:" in a text such as "specify the type. 0:all 1:some", joined by commas.
string meanings_in(const string &text)
{
    string meanings;
    for (size_t at = text.find(':'); at != string::npos; at = text.find(':', at + 1)) {
        const string_view rest = string_view(text).substr(at + 1);
        meanings.append(meanings.empty() ? "" : ",").append(rest.substr(0, rest.find(' ')));
    }
    return meanings;
}

// Takes what the usage text says of the option: "--word [ARGUMENT]\tTEXT", or one blank before the
// text where the argument is long.
void take_usage(const CommandSpec &command, CompletedOption &option)
{
    for (const char *const *line = command.help; *line != nullptr; line++) {
        string_view rest = *line;
        const string word = "--" + option.word;
        if (!rest.starts_with(word) || rest.find_first_of(" \t") != word.size())
            continue;
        rest.remove_prefix(word.size() + 1);
        const size_t end = std::min(rest.find_first_of(" \t"), rest.size());
        if (option.kind != Completes::nothing && (*line)[word.size()] == ' ')
            option.argument = rest.substr(0, end);
        option.help = trimmed(option.argument.empty() ? rest : rest.substr(end));
        if (option.help.find(" 0:") != string::npos)
            option.meanings = meanings_in(option.help);
        return;
    }
}

CompletedOption option_of(const CommandSpec &command, const CommandOption &row)
{
    const option *known = OPTION_TABLE;
    while (known->val != row.code)
        known++;
    CompletedOption made;
    made.word = known->name;
    made.values = text_or_empty(row.values);
    made.kind = known->has_arg == no_argument ? Completes::nothing
                : row.code == OPT_FILE        ? Completes::file_list
                : row.code == OPT_MAC         ? Completes::mac_list
                : row.values != nullptr       ? Completes::words
                                              : Completes::free;
    take_usage(command, made);
    return made;
}

// Its options are read by getopt_long(3) alike, and a repeated one is refused or takes the place of
// the first: none is of use twice.
CompletedProgram zov()
{
    CompletedProgram program;
    program.name = "zov";
    program.has_commands = true;
    for (const CommandSpec *const *command = COMMANDS; *command != nullptr; command++) {
        CompletedLine line = {(*command)->name, (*command)->description, {}};
        for (const CommandOption *row = (*command)->options; row->code != OPT_NONE; row++)
            line.options.push_back(option_of(**command, *row));
        for (const OptionText &row : PLACE_TEXTS)
            if (row.name != string_view("timeout"))
                line.options.push_back(option_of(row));
        program.lines.push_back(line);
    }
    return program;
}

} // namespace

std::vector<CompletedProgram> completed_programs()
{
    std::vector<CompletedProgram> programs = {zov()};
    for (const ListedProgram &listed : PROGRAMS)
        programs.push_back(program_of(listed));
    return programs;
}

string CompletedProgram::identifier() const
{
    return replaced(name, "-", "_");
}

string replaced(string_view text, string_view from, string_view to)
{
    string result;
    for (size_t at = 0; at < text.size();) {
        const bool here = text.substr(at).starts_with(from);
        result += here ? to : text.substr(at, 1);
        at += here ? from.size() : 1;
    }
    return result;
}
