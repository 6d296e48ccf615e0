// SPDX-License-Identifier: MIT
// Writes a completion script to standard output: generate_completions bash|zsh|fish
#include "accepted_options.h"
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
    for (const option *row = OPTION_TABLE; row->name != nullptr; row++)
        if (row->val == code)
            return row->has_arg == required_argument;
    return false;
}

string_view known_values(string_view command, OptionCode code)
{
    for (const KnownValues &row : KNOWN_VALUES)
        if (row.code == code && (row.command.empty() || row.command == command))
            return row.values;
    return {};
}

// Every option of a command, those that main takes included.
template <class Action> void for_each_option(const AcceptedOptions &command, Action action)
{
    for (const OptionCode code : command.codes)
        action(code);
    action(OPT_ACSERVER);
    action(OPT_ACPORT);
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
    for (const AcceptedOptions &command : ACCEPTED_OPTIONS)
        cout << (&command == ACCEPTED_OPTIONS ? "" : " ") << command.command;
    cout << "\" -- \"$cur\"))\n"
            "        return\n"
            "    fi\n"
            "    case ${COMP_WORDS[1]} in\n";
    for (const AcceptedOptions &command : ACCEPTED_OPTIONS) {
        cout << "    " << command.command << ") options=\"";
        string separator;
        for_each_option(command, [&](OptionCode code) {
            cout << separator << "--" << option_name(code);
            separator = " ";
        });
        cout << "\" ;;\n";
    }
    cout << "    *) return ;;\n"
            "    esac\n"
            "    case ${COMP_WORDS[1]}:$prev in\n";
    for (const AcceptedOptions &command : ACCEPTED_OPTIONS)
        for_each_option(command, [&](OptionCode code) {
            if (!takes_argument(code))
                return;
            cout << "    " << command.command << ":--" << option_name(code) << ") ";
            const string_view values = known_values(command.command, code);
            if (code == OPT_FILE)
                cout << "compopt -o filenames; COMPREPLY=($(compgen -f -- \"$cur\")); return ;;\n";
            else if (values.empty())
                cout << "return ;;\n";
            else
                cout << "values=\"" << values << "\" ;;\n";
        });
    cout << "    esac\n"
            "    COMPREPLY=($(compgen -W \"${values:-$options}\" -- \"$cur\"))\n"
            "}\n"
            "complete -F _zov zov\n";
}

const char *description(const AcceptedOptions &command)
{
    return find_command(string(command.command).c_str())->description;
}

void write_zsh()
{
    cout << "#compdef zov\n"
            "local -a commands\n"
            "commands=(\n";
    for (const AcceptedOptions &command : ACCEPTED_OPTIONS)
        cout << "    '" << command.command << ':' << description(command) << "'\n";
    cout << ")\n"
            "if (( CURRENT == 2 )); then\n"
            "    _describe command commands\n"
            "    return\n"
            "fi\n"
            "case $words[2] in\n";
    for (const AcceptedOptions &command : ACCEPTED_OPTIONS) {
        cout << command.command << ") _arguments '1: :'";
        for_each_option(command, [&](OptionCode code) {
            cout << " '*--" << option_name(code);
            const string_view values = known_values(command.command, code);
            if (code == OPT_FILE)
                cout << ":file:_files";
            else if (!values.empty())
                cout << ":value:(" << values << ')';
            else if (takes_argument(code))
                cout << ":value: ";
            cout << '\'';
        });
        cout << " ;;\n";
    }
    cout << "esac\n";
}

void write_fish()
{
    cout << "# fish completion for zov\n"
            "complete -c zov -f\n";
    for (const AcceptedOptions &command : ACCEPTED_OPTIONS)
        cout << "complete -c zov -n '__fish_is_first_arg' -a " << command.command << " -d '"
             << description(command) << "'\n";
    for (const AcceptedOptions &command : ACCEPTED_OPTIONS)
        for_each_option(command, [&](OptionCode code) {
            cout << "complete -c zov -n '__fish_seen_subcommand_from " << command.command << "' -l "
                 << option_name(code);
            const string_view values = known_values(command.command, code);
            if (code == OPT_FILE)
                cout << " -r -F";
            else if (!values.empty())
                cout << " -x -a '" << values << '\'';
            else if (takes_argument(code))
                cout << " -x";
            cout << '\n';
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
