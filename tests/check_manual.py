#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares the manual pages zov.8 and ac-sim.1 with the programs: commands and options of the one
are those of the other.

usage: check_manual.py ZOV AC_SIM MAN_FOLDER SOURCE_FOLDER
"""

import pathlib
import re
import subprocess
import sys


def output(*command, status=0):
    done = subprocess.run(command, stdout=subprocess.PIPE, text=True)
    if done.returncode != status or not done.stdout:
        sys.exit(f"{' '.join(command)}: status {done.returncode}, {len(done.stdout)} bytes")
    return done.stdout


def usage_of(zov):
    """The options of each command that the usage text lists."""
    commands = {}
    for line in output(zov, status=1).splitlines():
        if match := re.match(r"(\w+)\t", line):
            options = commands[match[1]] = set()
        elif match := re.match(r"\t--(\w+)", line):
            options.add(match[1])
    return commands


def named(text):
    """The options that are marked up as such."""
    return set(re.findall(r"\bFl -([\w-]+)", text))


def entries_of(page):
    """The entry of each command. One with several forms has its text behind the last of them."""
    parts = re.split(r"^\.(?:It (?:Xo\n\.)?Cm (\w+)|S[hs] .*)", page, flags=re.M)
    entries = {}
    for command, text in zip(parts[1::2], parts[2::2]):
        if command:
            entries[command] = entries.get(command, "") + text
    return entries


def compare(what, program, page):
    """A line for each thing that only one of the two sets has."""
    return ([f"{what} {name} is not in the page" for name in sorted(program - page)] +
            [f"{what} {name} is not in the program" for name in sorted(page - program)])


def main(zov, ac_sim, man_folder, source_folder):
    zov_page = pathlib.Path(man_folder, "zov.8").read_text()
    sim_page = pathlib.Path(man_folder, "ac-sim.1").read_text()
    table = pathlib.Path(source_folder, "src/options/options.h").read_text()
    zov_options = set(re.findall(r'OPTION\(\w+, "(\w+)"', table))
    sim_options = {"help"} | set(re.findall(r"^  --([\w-]+)", output(ac_sim, "--help"), re.M))
    commands, entries = usage_of(zov), entries_of(zov_page)

    wrong = compare("zov.8: command", set(commands), set(entries))
    for command in sorted(commands.keys() & entries.keys()):
        wrong += [f"zov.8: option {name} is not in the entry of {command}"
                  for name in sorted(commands[command] - named(entries[command]))]
    wrong += compare("zov.8: option", zov_options, named(zov_page))
    wrong += compare("ac-sim.1: option", sim_options, named(sim_page))
    for name, page in (("zov.8", zov_page), ("ac-sim.1", sim_page)):  # command lines of either
        typed = re.findall(r"(?<![\w-])--([a-z][\w-]*)", page.replace(r"\-", "-"))
        wrong += [f"{name}: --{option} is no option of zov or ac-sim"
                  for option in sorted(set(typed) - zov_options - sim_options)]
    if wrong:
        sys.exit("\n".join(wrong))
    print(f"{len(commands)} commands, {len(zov_options)} and {len(sim_options)} options")


if __name__ == "__main__":
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    main(*sys.argv[1:])
