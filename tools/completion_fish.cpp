// SPDX-License-Identifier: MIT
#include "tools/completion.h"

#include <iostream>
#include <sstream>

using std::cout;
using std::string;

static string quoted(const string &text)
{
    return "'" + replaced(replaced(text, "\\", "\\\\"), "'", "\\'") + "'";
}

// The values, each with its meaning behind a tab. Behind an empty one fish shows nothing; without a
// tab it would show the option's help with each.
static string described(const CompletedOption &option)
{
    std::istringstream values(option.values), meanings(option.meanings);
    string words, value, meaning;
    while (values >> value) {
        if (!std::getline(meanings, meaning, ','))
            meaning.clear();
        words.append(words.empty() ? "" : " ").append(value).append("\\t\"" + meaning + '"');
    }
    return words;
}

static string argument(const CompletedOption &option)
{
    switch (option.kind) {
    case Completes::nothing:
        return "";
    case Completes::words:
        return " -x -a " + quoted(described(option));
    case Completes::word_list:
        return " -x -a " + quoted("(__PROGRAM_each printf '%s\\t\\n' " + option.values + ")");
    case Completes::file:
        return " -r -F";
    case Completes::file_list:
        return " -r -F -a '(__PROGRAM_files)'";
    case Completes::folder:
        return " -x -a '(__fish_complete_directories)'";
    case Completes::mac:
        return " -x -a '(__PROGRAM_devices)'";
    case Completes::mac_list:
        return " -x -a '(__PROGRAM_each __PROGRAM_devices)'";
    case Completes::free:
        return " -x";
    }
    return "";
}

void write_fish(const CompletedProgram &program, const string &functions)
{
    string text = "# fish completion for " + program.name + "\n" + functions + "\n";
    const string complete = "complete -c " + program.name;
    if (program.operands != Completes::file)
        text += complete + " -f\n";
    if (program.has_commands)
        for (const CompletedLine &line : program.lines)
            text += complete + " -n '__fish_is_first_arg' -a " + line.name + " -d " +
                    quoted(line.help) + "\n";
    for (const CompletedLine &line : program.lines)
        for (const CompletedOption &option : line.options) {
            string can = line.name.empty() ? "\"\"" : line.name;
            if (!option.repeatable)
                can.append(" ").append(option.word);
            if (!option.repeatable && option.kind != Completes::nothing)
                can += " argument";
            text += complete + " -n '__PROGRAM_can ";
            text += can + "' -l " + option.word + argument(option);
            text += (option.help.empty() ? "" : " -d " + quoted(option.help)) + "\n";
        }
    cout << replaced(text, "PROGRAM", program.identifier());
}
