# SPDX-License-Identifier: MIT
"""Types what a document shows, in its order, and compares what is printed.

usage: documents.py DOCUMENT OPTIONS_OF_AC_SIM PROGRAM...

A document is a manual page or Markdown. What stands behind "$ " is typed, with the lines that belong to it;
below it stands the output. There "..." is the rest of a line, on a line of its own any lines, and blanks are
as wide as one likes. `cat NAME` of a file that is not there makes one of the lines below it. A document in
JSON has to be a configuration that one of the simulated devices takes. All talk to one controller with these
options, unless they name another.
"""
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile
from pathlib import Path

DOCUMENT, SIM_OPTIONS, *PROGRAMS = sys.argv[1:]
SOURCE = Path(__file__).parents[1]
ESCAPES = {r"\-": "-", r"\e": "\\", r"\(aq": "'", r"\(dq": '"', r"\(ha": "^", r"\(ti": "~", r"\&": ""}
LEFT_OUT = re.compile(r"zov (exit|kill)\b|.*\b(apt-get|cmake|dpkg-buildpackage)\b|scripts/|ac-sim >/dev/null|PATH=|kill %|(apt-get|man) ")
MARK = "---- typed:"


def blocks(text):
    """The literal blocks of a document."""
    if DOCUMENT.endswith(".md"):
        found = re.findall(r"^```\w*\n((?:.*\n)*?)^```|((?:^    .*\n|^\n(?=    ))+)", text, re.M)
        return [fenced or re.sub(r"^    ", "", indented, flags=re.M) for fenced, indented in found]
    found = re.findall(r"^\.Bd -literal.*?\n(.*?)^\.Ed", text, re.M | re.S)
    return [re.sub(r"\\(?:\(..|.)", lambda escape: ESCAPES[escape[0]], block) for block in found]


def with_free_ports(block):
    """A block whose simulators listen where nobody else does."""
    for shown in re.findall(r"listening on 127\.0\.0\.1:(\d+)", block):
        with socket.create_server(("127.0.0.1", 0)) as taken:
            port = str(taken.getsockname()[1])
        block = block.replace(shown, port).replace("ac-sim --port 0", f"ac-sim --port {port}")
    return block


def is_open(typed):
    """Whether the shell waits for more."""
    done = subprocess.run(["bash", "-n", "-c", typed], stderr=subprocess.PIPE, text=True)
    return typed.endswith(("\\", "|")) or bool(done.stderr)


def steps(block):
    """What is typed in a block, each with the lines below it."""
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
    """The regular expression for lines of output."""
    def one(line):
        if line.strip() == "...":
            return r"(?:.*\n)*?"
        return r"[ \t]*" + r"[ \t]+".join(map(re.escape, line.split())).replace(re.escape("..."), ".*") + r"[ \t\r]*\n"
    return "\n*".join(one(line) for line in lines if line.strip()) + r"\n*"


def make_tools(folder, port):
    """Programs of the same names, which talk to the controller at this port; a ps that sees nobody."""
    folder.mkdir()
    for path in PROGRAMS:
        words = {"zov": f'"$1" --acport {port} "${{@:2}}"', "ac-sim": '"$@"'}
        name = Path(path).name
        text = f"#!/bin/bash\nexec {os.path.abspath(path)} " + words.get(name, f'--acport {port} "$@"')
        Path(folder, name).write_text(text + "\n")
    Path(folder, "ps").write_text("#!/bin/sh\n")
    for tool in folder.iterdir():
        tool.chmod(0o700)


def play(script, folder):
    """The output of a script, one text for each of its steps."""
    sim = next(path for path in PROGRAMS if Path(path).name == "ac-sim")
    work = Path(folder, "work")
    shutil.copytree(SOURCE / "examples", work / "examples")
    with subprocess.Popen([sim, "--port", "0", *SIM_OPTIONS.split()], stdout=subprocess.PIPE, text=True) as process:
        try:
            port = process.stdout.readline().strip().rsplit(":", 1)[1]
            make_tools(Path(folder, "tools"), port)
            text = "exec 2>&1\ntrap 'kill $(jobs -p) 2>/dev/null' EXIT\n"
            for typed, lines in script:
                name = re.fullmatch(r"cat (\S+)", typed)
                if name and not (work / name[1]).exists():
                    (work / name[1]).write_text("\n".join(lines) + "\n")
                    (work / name[1]).chmod(0o700)
                text += f"echo; echo '{MARK}'\n{typed}\n" + ("sleep 0.5\n" if typed.endswith("&") else "")
            environment = {**os.environ, "PATH": f"{folder}/tools:{os.environ['PATH']}", "TZ": "UTC"}
            done = subprocess.run(["bash", "-c", text], cwd=work, env=environment, stdin=subprocess.DEVNULL,
                                  stdout=subprocess.PIPE, timeout=300)
            return done.stdout.decode(errors="replace").split(f"\n{MARK}\n")[1:]
        finally:
            process.terminate()
            Path(f"/run/lock/zov-127.0.0.1-{port}").unlink(missing_ok=True)


def main():
    text = Path(DOCUMENT).read_text()
    script = [step for block in blocks(text) for step in steps(with_free_ports(block))]
    with tempfile.TemporaryDirectory(prefix="zov-documents.") as folder:
        outputs = play(script, folder)
    if not script or len(outputs) != len(script):
        sys.exit(f"{len(outputs)} of {len(script)} steps were run")
    wrong = 0
    for (typed, lines), output in zip(script, outputs):
        if not re.fullmatch(pattern(lines), output + "\n"):
            wrong += 1
            shown = "\n".join(lines)
            print(f"$ {typed}\n{output}\n  instead of\n{shown}\n")
    print(f"{len(script)} steps, {wrong} differ")
    sys.exit(1 if wrong else 0)


main()
