# SPDX-License-Identifier: MIT
"""Types what a document shows, in its order, and compares what is printed.

documents.py ZOV DOCUMENT [OPTION_OF_AC_SIM]...

A document is a manual page or Markdown. What stands behind "$ " is typed, with the lines that
belong to it; below it stands the output. There "..." is the rest of a line, on a line of its own
any lines, and blanks are as wide as one likes. `cat NAME` of a file that is not there makes one of
the lines below it. A document in JSON has to be a configuration that one of the simulated devices
takes. All talk to one controller with these options, unless they name another.
"""
import os
import re
import shlex
import shutil
import socket
import sys
import tempfile
import textwrap
import time
import unittest
from pathlib import Path

from controllers import PORTS, Controller
from harness import SOURCE, call, main, needs, tool

DOCUMENT, *SIM_OPTIONS = sys.argv[2:]
TEXT = Path(DOCUMENT).read_text()
PROGRAMS = "zov ac-sim zov-apply zov-check zov-export zov-rollout".split()
ESCAPES = {r"\-": "-", r"\e": "\\", r"\(aq": "'", r"\(dq": '"', r"\(ha": "^", r"\(ti": "~",
           r"\&": ""}
LEFT_OUT = re.compile(r"zov (exit|kill)\b|.*\b(apt-get|cmake|dpkg-buildpackage)\b|scripts/|"
                      r"ac-sim >/dev/null|PATH=|kill %|man ")
MARK = "---- typed:"


def blocks(text):
    if DOCUMENT.endswith(".md"):
        found = re.findall(r"^```\w*\n((?:.*\n)*?)^```|((?:^    .*\n|^\n(?=    ))+)", text, re.M)
        return [fenced or textwrap.dedent(indented) for fenced, indented in found]
    found = re.findall(r"^\.Bd -literal.*?\n(.*?)^\.Ed", text, re.M | re.S)
    return [re.sub(r"\\(?:\(..|.)", lambda escape: ESCAPES[escape[0]], block) for block in found]


def with_free_ports(block):
    """A block whose simulators listen where nobody else does."""
    for shown in re.findall(r"listening on 127\.0\.0\.1:(\d+)", block):
        with socket.create_server(("127.0.0.1", 0)) as taken:
            port = str(taken.getsockname()[1])
        PORTS.add(port)
        block = block.replace(shown, port).replace("ac-sim --port 0", f"ac-sim --port {port}")
    return block


def is_open(typed):
    return typed.endswith(("\\", "|")) or call("bash", "-n", "-c", typed)[2] != ""


def steps(block):
    if block.startswith("{"):
        name = f"document{hash(block)}.json"
        yield (f"cat {name}", block.rstrip("\n").split("\n"))
        yield (f"zov cfg --mac 02:A3:00:00:00:01 --file {name} 2>&- || "
               f"zov cfg --mac 02:A2:00:00:00:01 --type 1 --file {name}", [])
    for part in re.split(r"^\$ ", block, flags=re.M)[1:]:
        lines = part.rstrip("\n").split("\n")
        typed = [lines.pop(0)]
        while lines and is_open("\n".join(typed)):
            typed.append(lines.pop(0))
        if not LEFT_OUT.match(typed[0]):
            yield "\n".join(typed), lines


def pattern(lines):
    def one(line):
        if line.strip() == "...":
            return r"(?:.*\n)*?"
        words = (re.escape(word).replace(re.escape("..."), ".*") for word in line.split())
        return r"[ \t]*" + r"[ \t]+".join(words) + r"[ \t\r]*\n"
    return "\n*".join(one(line) for line in lines if line.strip()) + r"\n*"


def make_tools(folder, port):
    """Programs of the same names, which end with the shell that starts them and talk to the
    controller at this port; a ps that sees nobody."""
    any_other = f'--acport {port} "$@"'
    words = {"zov": f'"$1" --acport {port} "${{@:2}}"', "ac-sim": '"$@"'}
    folder.mkdir()
    for name in PROGRAMS:
        typed = f"{shlex.quote(tool(name))} {words.get(name, any_other)}"
        Path(folder, name).write_text(f"#!/bin/bash\nexec setpriv --pdeathsig KILL {typed}\n")
    Path(folder, "ps").write_text("#!/bin/sh\n")
    for made in folder.iterdir():
        made.chmod(0o700)


def play(script, folder):
    """The output of a script, one text for each of its steps."""
    work = Path(folder, "work")
    shutil.copytree(SOURCE / "examples", work / "examples")
    with Controller(*SIM_OPTIONS) as controller:
        make_tools(Path(folder, "tools"), controller.port)
        text = "exec 2>&1\ntrap 'kill $(jobs -p) 2>/dev/null' EXIT\n"
        for typed, lines in script:
            name = re.fullmatch(r"cat (\S+)", typed)
            if name and not (work / name[1]).exists():
                (work / name[1]).write_text("\n".join(lines) + "\n")
                (work / name[1]).chmod(0o700)
            pause = "sleep 0.5\n" if typed.endswith("&") else ""
            text += f"echo; echo '{MARK}'\n{typed}\n{pause}"
        path = f"{folder}/tools:{os.environ['PATH']}"
        done = call("bash", "-c", text, cwd=work, env={**os.environ, "PATH": path, "TZ": "UTC"},
                    timeout=300)
        return done[1].split(f"\n{MARK}\n")[1:]


@needs("bash", "setpriv", *(name for name in ("git", "jq") if f"{name} " in TEXT))
class Document(unittest.TestCase):
    def test_prints_what_it_shows(self):
        script = [step for block in blocks(TEXT) for step in steps(with_free_ports(block))]
        folder = tempfile.mkdtemp(prefix="zov-documents.")
        try:
            outputs = play(script, folder)
        finally:
            for _ in range(100):  # what was started may still write a file while it ends
                shutil.rmtree(folder, ignore_errors=True)
                if not os.path.exists(folder):
                    break
                time.sleep(0.02)
        self.assertTrue(script)
        self.assertEqual(len(outputs), len(script), "steps were run")
        for (typed, lines), output in zip(script, outputs):
            shown = "\n".join(lines)
            self.assertTrue(re.fullmatch(pattern(lines), output + "\n"),
                            f"$ {typed}\n{output}\n  instead of\n{shown}\n")


main()
