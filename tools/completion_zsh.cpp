// SPDX-License-Identifier: MIT
#include "tools/completion.h"

#include <iostream>

using std::cout;
using std::string;

// The text within single quotes.
static string quoted(const string &text)
{
    return "'" + replaced(text, "'", "'\\''") + "'";
}

// The text within the brackets of an entry for _arguments.
static string description(string text)
{
    for (const char *special : {"\\", "[", "]", ":"})
        text = replaced(text, special, string("\\") + special);
    return text.empty() ? "" : "[" + text + "]";
}

static string action(const CompletedOption &option)
{
    switch (option.kind) {
    case Completes::words:
        return "(" + option.values + ")";
    case Completes::word_list:
        return "_sequence compadd - " + option.values;
    case Completes::file:
        return "_files";
    case Completes::file_list:
        return "_sequence _files";
    case Completes::folder:
        return "_files -/";
    case Completes::mac:
        return "_PROGRAM_devices";
    case Completes::mac_list:
        return "_sequence _PROGRAM_devices";
    case Completes::nothing:
    case Completes::free:
        break;
    }
    return " ";
}

// _arguments offers an option once, unless * stands before it.
static string option_words(const CompletedOption &option)
{
    string text = (option.repeatable ? "*--" : "--") + option.word;
    const bool has_argument = option.kind != Completes::nothing;
    text += (has_argument ? "=" : "") + description(option.help);
    if (has_argument)
        text += ":" + replaced(option.argument.empty() ? "value" : option.argument, ":", "\\:") +
                ":" + action(option);
    return " \\\n        " + quoted(text);
}

void write_zsh(const CompletedProgram &program, const string &functions)
{
    const auto arguments = [&](const CompletedLine &line) {
        string call = "_arguments";
        if (program.has_commands)
            call += " '1: :'";
        for (const CompletedOption &option : line.options)
            call += option_words(option);
        return call + (program.operands == Completes::file ? " \\\n        '*:file:_files'" : "");
    };
    string text = "#compdef " + program.name + "\n" + functions + "\n";
    if (program.has_commands) {
        text += "local -a commands\n"
                "commands=(\n";
        for (const CompletedLine &line : program.lines)
            text += "    " + quoted(line.name + ":" + line.help) + "\n";
        text += ")\n"
                "if (( CURRENT == 2 )); then\n"
                "    _describe command commands\n"
                "    return\n"
                "fi\n"
                "case $words[2] in\n";
        for (const CompletedLine &line : program.lines)
            text += "    " + line.name + ") " + arguments(line) + " ;;\n";
        text += "esac\n";
    } else {
        text += arguments(program.lines[0]) + "\n";
    }
    cout << replaced(text, "PROGRAM", program.identifier());
}
