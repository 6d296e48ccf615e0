// SPDX-License-Identifier: MIT
// Writes a completion script to standard output: generate_completions bash|zsh|fish
#include "cli/command_table.h"

#include <iostream>
#include <string>
#include <string_view>

using std::cout;
using std::string;
using std::string_view;

namespace {

bool takes_argument(OptionCode code)
{
    const option *row = OPTION_TABLE;
    while (row->val != code)
        row++;
    return row->has_arg == required_argument;
}

template <class Action> void for_each_command(Action action)
{
    for (const CommandSpec *const *command = COMMANDS; *command != nullptr; command++)
        action(**command);
}

// Every option of a command, those that main takes included.
template <class Action> void for_each_option(const CommandSpec &command, Action action)
{
    for (const CommandOption *row = command.options; row->code != OPT_NONE; row++)
        action(row->code, row->values);
    action(OPT_ACSERVER, nullptr);
    action(OPT_ACPORT, nullptr);
}

void write_bash()
{
    cout << "# bash completion for zov\n"
            "_zov()\n"
            "{\n"
            "    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} options "
            "values\n"
            "    if [[ $COMP_CWORD -eq 1 ]]; then\n"
            "        COMPREPLY=($(compgen -W \"";
    string separator;
    for_each_command([&](const CommandSpec &command) {
        cout << separator << command.name;
        separator = " ";
    });
    cout << "\" -- \"$cur\"))\n"
            "        return\n"
            "    fi\n"
            "    case ${COMP_WORDS[1]} in\n";
    for_each_command([&](const CommandSpec &command) {
        cout << "    " << command.name << ") options=\"";
        separator.clear();
        for_each_option(command, [&](OptionCode code, const char *) {
            cout << separator << "--" << option_name(code);
            separator = " ";
        });
        cout << "\" ;;\n";
    });
    cout << "    *) return ;;\n"
            "    esac\n"
            "    case ${COMP_WORDS[1]}:$prev in\n";
    for_each_command([](const CommandSpec &command) {
        for_each_option(command, [&](OptionCode code, const char *values) {
            if (!takes_argument(code))
                return;
            cout << "    " << command.name << ":--" << option_name(code) << ") ";
            if (code == OPT_FILE)
                cout << "compopt -o filenames; COMPREPLY=($(compgen -f -- \"$cur\")); return ;;\n";
            else if (values == nullptr)
                cout << "return ;;\n";
            else
                cout << "values=\"" << values << "\" ;;\n";
        });
    });
    cout << "    esac\n"
            "    COMPREPLY=($(compgen -W \"${values:-$options}\" -- \"$cur\"))\n"
            "}\n"
            "complete -F _zov zov\n";
}

void write_zsh()
{
    cout << "#compdef zov\n"
            "local -a commands\n"
            "commands=(\n";
    for_each_command([](const CommandSpec &command) {
        cout << "    '" << command.name << ':' << command.description << "'\n";
    });
    cout << ")\n"
            "if (( CURRENT == 2 )); then\n"
            "    _describe command commands\n"
            "    return\n"
            "fi\n"
            "case $words[2] in\n";
    for_each_command([](const CommandSpec &command) {
        cout << command.name << ") _arguments '1: :'";
        for_each_option(command, [](OptionCode code, const char *values) {
            cout << " '*--" << option_name(code);
            if (code == OPT_FILE)
                cout << ":file:_files";
            else if (values != nullptr)
                cout << ":value:(" << values << ')';
            else if (takes_argument(code))
                cout << ":value: ";
            cout << '\'';
        });
        cout << " ;;\n";
    });
    cout << "esac\n";
}

void write_fish()
{
    cout << "# fish completion for zov\n"
            "complete -c zov -f\n";
    for_each_command([](const CommandSpec &command) {
        cout << "complete -c zov -n '__fish_is_first_arg' -a " << command.name << " -d '"
             << command.description << "'\n";
    });
    for_each_command([](const CommandSpec &command) {
        for_each_option(command, [&](OptionCode code, const char *values) {
            cout << "complete -c zov -n '__fish_seen_subcommand_from " << command.name << "' -l "
                 << option_name(code);
            if (code == OPT_FILE)
                cout << " -r -F";
            else if (values != nullptr)
                cout << " -x -a '" << values << '\'';
            else if (takes_argument(code))
                cout << " -x";
            cout << '\n';
        });
    });
}

} // namespace

int main(int argc, char **argv)
{
    const string_view shell = argc == 2 ? argv[1] : "";
    if (shell == "bash")
        write_bash();
    else if (shell == "zsh")
        write_zsh();
    else if (shell == "fish")
        write_fish();
    else
        return 2;
    return cout.flush() ? 0 : 1;
}
