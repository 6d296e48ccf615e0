// SPDX-License-Identifier: MIT
#include "tools/completion.h"

#include <iostream>

using std::cout;
using std::string;

// How the script names what an argument is.
static string kind_word(const CompletedOption &option)
{
    switch (option.kind) {
    case Completes::nothing:
        return "";
    case Completes::free:
        return "=";
    case Completes::words:
        return "='words " + option.values + "'";
    case Completes::word_list:
        return "='word_list " + option.values + "'";
    case Completes::file:
        return "=file";
    case Completes::file_list:
        return "=file_list";
    case Completes::folder:
        return "=folder";
    case Completes::mac:
        return "=mac";
    case Completes::mac_list:
        return "=mac_list";
    }
    return "";
}

static string options_call(const CompletedProgram &program, const CompletedLine &line)
{
    string call = "_PROGRAM_options " + string(program.operands == Completes::file ? "file" : "''");
    for (const CompletedOption &option : line.options)
        call += string(option.repeatable ? " '*'--" : " --") + option.word + kind_word(option);
    return call;
}

void write_bash(const CompletedProgram &program, const string &functions)
{
    string text = "# bash completion for " + program.name + "\n" + functions +
                  "\n_PROGRAM()\n"
                  "{\n"
                  "    local words=() cur kept\n"
                  "    _PROGRAM_words\n";
    if (program.has_commands) {
        string names;
        for (const CompletedLine &line : program.lines)
            names += " " + line.name;
        text += "    if ((${#words[@]} == 1)); then\n"
                "        mapfile -t COMPREPLY < <(compgen -W '" +
                names.substr(1) +
                "' -- \"$cur\")\n"
                "        return\n"
                "    fi\n"
                "    case ${words[1]} in\n";
        for (const CompletedLine &line : program.lines)
            text += "    " + line.name + ") " + options_call(program, line) + " ;;\n";
        text += "    esac\n";
    } else {
        text += "    " + options_call(program, program.lines[0]) + "\n";
    }
    text += "}\n"
            "complete -F _PROGRAM " +
            program.name + "\n";
    cout << replaced(text, "PROGRAM", program.identifier());
}
