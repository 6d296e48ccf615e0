// SPDX-License-Identifier: MIT
// What shells can complete, gathered from the tables of the programs, and the three forms in which
// it is written to standard output.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// What an option's argument, or a program's operand, is.
enum class Completes {
    nothing, // there is none
    free,    // a text that nobody can guess
    words,   // one of a few
    word_list,
    file,
    file_list, // lists have commas between their elements
    folder,
    mac,
    mac_list,
};

struct CompletedOption {
    std::string word;
    std::string argument; // its name
    std::string help;     // can be empty
    Completes kind = Completes::nothing;
    std::string values; // for words, separated by spaces
    bool repeatable = false;
    std::string meanings; // of the values, joined by commas; can be empty
};

// The options of a program, or of a command of zov's.
struct CompletedLine {
    std::string name;
    std::string help;
    std::vector<CompletedOption> options;
};

struct CompletedProgram {
    std::string name;
    bool has_commands = false;
    std::vector<CompletedLine> lines; // one, without a name, when there are no commands
    Completes operands = Completes::nothing;

    // The name for functions of the shell.
    [[nodiscard]] std::string identifier() const;
};

// Every program there is completion for.
std::vector<CompletedProgram> completed_programs();

// Each writes a script; the functions are those that all scripts of the shell have, in which, as in
// the script itself, PROGRAM stands for the identifier.
void write_bash(const CompletedProgram &program, const std::string &functions);
void write_zsh(const CompletedProgram &program, const std::string &functions);
void write_fish(const CompletedProgram &program, const std::string &functions);

// The text with each `from` replaced.
std::string replaced(std::string_view text, std::string_view from, std::string_view to);
