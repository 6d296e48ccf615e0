#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Asks real shells what they complete: completions.py COMPLETION_FOLDER EXAMPLE_FOLDER"""
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

FOLDER, EXAMPLES = sys.argv[1:3]

# A line to complete and the candidates; the cursor is at its end.
LINES = [("zov au", ["autoch", "autotp"]), ("zov rst --f", ["--factory", "--flickreboot"]),
         ("zov wtps --no", ["--no_cfg", "--no_stainf"]), ("zov autoch --radio ", ["2g", "5g"]),
         ("zov kick --radio 5", ["5g", "5g1"]), ("zov sh --type ", ["0", "1", "2"]),
         ("zov wtpflag --flag ", ["1", "2"]), ("zov online --", ["--acport", "--acserver"]),
         ("zov bgscan --enable ", ["0", "1"]), ("zov cfg --file office-", ["office-ap.json"])]


def bash(line):
    script = f"""source {FOLDER}/zov.bash; cd {EXAMPLES}
        COMP_WORDS=({line}); [[ '{line}' == *' ' ]] && COMP_WORDS+=('')
        COMP_CWORD=$((${{#COMP_WORDS[@]}} - 1)); compopt() {{ :; }}
        _zov; printf '%s\\n' "${{COMPREPLY[@]}}" """
    return subprocess.run(["bash", "--norc", "-c", script], capture_output=True, text=True, check=True).stdout


def fish(line):
    script = f"cd {EXAMPLES}; source {FOLDER}/zov.fish; complete -C '{line}' | cut -f 1"
    return subprocess.run(["fish", "--no-config", "-c", script], capture_output=True, text=True, check=True).stdout


def zsh(line):
    # Completion needs a line editor: an inner shell in a pseudo-terminal lists its candidates.
    with tempfile.TemporaryDirectory() as folder:
        shutil.copy(f"{FOLDER}/zov.zsh", f"{folder}/_zov")
        setup = f"""
            zmodload zsh/zpty
            zpty shell zsh -f -i
            zpty -w shell "PS1= ; cd {EXAMPLES}; fpath=({folder} $fpath); autoload -U compinit; compinit -u -D"
            zpty -w shell "LISTMAX=1000; setopt no_beep no_auto_menu; bindkey '^X' list-choices; print READY\\$((1+1))"
            zpty -r shell text '*READY2*'
            zpty -n -w shell {shlex.quote(line)}$'\\C-x'
            repeat 20; do
                sleep 0.05
                zpty -rt shell text && print -rn -- "$text"
            done
            zpty -d shell"""
        result = subprocess.run(["zsh", "-f", "-c", setup], capture_output=True, text=True, timeout=60)
    output = re.sub(r"\x1b\[[0-9;?]*[A-Za-z]", "", result.stdout).replace("\r", "\n")
    return "\n".join(text for text in output.split() if text not in line.split())


class Completions(unittest.TestCase):
    def check(self, shell):
        for line, expected in LINES:
            with self.subTest(line=line):
                words = {word for word in shell(line).split() if word.isprintable()}
                offered = {word for word in words if re.fullmatch(r"(--)?[\w.-]+", word)}
                self.assertLessEqual(set(expected), offered)
                if shell is not zsh:  # which shows descriptions among them
                    self.assertEqual(offered, set(expected))

    def test_bash(self):
        self.check(bash)

    def test_fish(self):
        self.check(fish)

    def test_zsh(self):
        self.check(zsh)


if __name__ == "__main__":
    for name in ("bash", "zsh", "fish"):
        if shutil.which(name) is None:
            sys.exit(f"{name} is missing")
    unittest.main(argv=sys.argv[:1], verbosity=0)
