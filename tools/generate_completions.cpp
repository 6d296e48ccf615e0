// SPDX-License-Identifier: MIT
// Writes a program's completion script to standard output.
//
// usage: generate_completions bash|zsh|fish PROGRAM FUNCTIONS
#include "tools/completion.h"
#include "util/output.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <sstream>

static constexpr struct {
    std::string_view name;
    const char *place; // the array of the options that tell where the controller is
    void (*write)(const CompletedProgram &program, const std::string &functions);
} SHELLS[] = {{"bash", "\"${place[@]}\"", write_bash},
              {"zsh", "\"${place[@]}\"", write_zsh},
              {"fish", "$place", write_fish}};

// A command that prints a line for each device: its address, and behind a tab what there is to tell
// it from others, in printable ASCII. It is silent when the controller does not answer within 300
// ms.
static std::string devices_command(std::string_view place)
{
    const std::string mac = "(([0-9A-F]{2}:){5}[0-9A-F]{2})";
    return "timeout 0.3 zov wtps --breif " + std::string(place) +
           " 2>/dev/null </dev/null |\n"
           "        LC_ALL=C sed -En 's/^" +
           mac + "  ([0-9.:]+)\\t([ -~]*)\\t.*/\\1\\t\\4 \\3/p; t; s/^" + mac + "  .*/\\1/p'";
}

int main(int argc, char **argv)
{
    if (argc != 4)
        return 2;
    std::stringstream file;
    file << std::ifstream(argv[3]).rdbuf();
    const std::string functions =
        file.str().substr(std::min(file.str().find("\n\n"), file.str().size()));
    if (functions.empty())
        return fail("generate_completions: cannot read %s\n", argv[3]);
    bool written = false;
    for (const auto &shell : SHELLS)
        for (const CompletedProgram &program : completed_programs())
            if (shell.name == argv[1] && program.name == argv[2]) {
                shell.write(program, replaced(functions, "DEVICES", devices_command(shell.place)));
                written = true;
            }
    if (!written)
        return fail("generate_completions: no completion of %s for %s\n", argv[2], argv[1]);
    return std::cout.flush() ? 0 : 1;
}
