# SPDX-License-Identifier: MIT
"""Asks real shells what they complete, with a simulated controller:
completions.py ZOV

Bash and zsh run in a terminal, where keys are sent; fish tells by itself.
"""
import os
import pty
import re
import select
import shlex
import socket
import tempfile
import time
import unittest
import unittest.mock
from pathlib import Path

from controllers import Controller
from harness import call, generated, main, needs, tool

PROGRAMS = "zov zov-apply zov-check zov-export zov-rollout ac-sim".split()
FILES = ["office.json", "two words.json", "sub/in.json"]

# A line up to the cursor, |, and what is offered for its last word. PORT is the controller's.
LINES = r"""
zov au|                        autoch  autotp
zov rst --f|                   --factory  --flickreboot
zov sh --type=|                --type=0  --type=1  --type=2
zov online --|                 --acport  --acserver
zov nothing --|
Options are offered once:
zov rst --mac 2:0:0:0:0:1 --wait=3 --|  --factory  --flickreboot  --acserver  --acport
zov-check --items --type 1 --| \
    --strict  --format  --acserver  --acport  --timeout  --help  --version
zov-rollout --name x --max|             --max-failures
ac-sim --refuse 7 --result 2:0:0:0:0:1=1 --r|  --result
zov-export --format c|                  cfg  csv
zov-export --output=o|                  --output=office.json
zov-export --directory |                sub/
zov-export --acport=PORT --mac 02:A2|   02:A2:00:00:00:01
zov-export --columns mac,poe_|          mac,poe_budget  mac,poe_used
zov-apply --e|                          --exclude
Files:
zov cfg --file o|                       office.json
zov cfg --file=o|                       --file=office.json
zov cfg --file=two\ w|                  --file=two words.json
zov cfg --file two\ words.json,o|       two words.json,office.json
zov cfg --file sub/|                    sub/in.json
zov-check |                             office.json  two words.json  sub/
zov-check --items 'two|                 two words.json
Devices, of the controller on the line, in lists and in lower case:
zov rst --acport PORT --mac |           02:A3:00:00:00:01  02:A3:00:00:00:02  02:A2:00:00:00:01
zov rst --acport=PORT --mac 02:a3:|     02:A3:00:00:00:01  02:A3:00:00:00:02
zov rst --acport=PORT --mac=02:A2|      --mac=02:A2:00:00:00:01
zov rst --acport PORT --mac 02:A3:00:00:00:01,02:A3|  02:A3:00:00:00:01,02:A3:00:00:00:02
zov rst --acport PORT --mac=02:A3:00:00:00:01,02:A2:00:00:00:01,| \
    --mac=02:A3:00:00:00:01,02:A2:00:00:00:01,02:A3:00:00:00:02
Without an answer, and without one in time, there is nothing:
zov rst --acport 1 --mac |
zov rst --acserver 127.0.0.1 --acport SILENT --mac |
"""
LINES = [(line, re.split("  +", words.strip()) if words.strip() else []) for line, words in
         re.findall(r"^(.*)\|(.*)$", LINES.replace("\\\n", ""), re.M)]

DESCRIPTIONS = [
    ("zov ", ["Reset WTP", "Show firmware upgrade list"]),
    ("zov sh --t", ["specify output type. 0:all 1:stdout 2:stderr"]),
    ("zov rst --acport PORT --mac ", ["SW-10P 10.2.0.1:5246", "AP-430 10.3.0.2:5246"]),
    ("zov-check --", ["print what would be sent of each good file: id, index, path, value"])]
FISH_DESCRIPTIONS = [  # of values
    ("zov sh --type ", ["0\tall", "1\tstdout", "2\tstderr"]),
    ("zov-export --format n", ["ndjson\ta device a line"]),
    ("zov-export --format pro", ["prometheus\tmetrics"])]
# A timeout(1) for tests, since 300 ms can be short on a busy machine; true for the silent port.
PATIENT = """#!/bin/sh
case $* in
*{silent}*) exec /usr/bin/timeout "$@" ;;
0.3\\ *) shift; exec /usr/bin/timeout 9 "$@" ;;
esac
"""


class Terminal:
    """A shell in a terminal. Control-X does what the shell's start says, Control-T shows the line
    and clears it."""

    def __init__(self, start, words, folder):
        home = f"{folder}.home"
        os.mkdir(home)
        Path(home, ".zshrc").write_text(f"{start}\nprintf '<<>>'")
        self.process, self.fd = pty.fork()
        if self.process == 0:
            os.chdir(folder)
            os.environ.update(HOME=home, ZDOTDIR=home, TERM="dumb")
            os.execvp(words[0], [word.replace("HOME", home) for word in words])
        self.answer("")

    def answer(self, keys):
        os.write(self.fd, keys.encode())
        shown, end = b"", time.monotonic() + 20
        while not (found := re.search(rb"<<(.*)>>", shown, re.S)) and time.monotonic() < end:
            if select.select([self.fd], [], [], 0.1)[0]:
                shown += os.read(self.fd, 65536)
        return shown[:found.start()].decode(), found[1].decode()

    def close(self):
        os.close(self.fd)
        os.waitpid(self.process, 0)


def file_of(program, shell):
    return shlex.quote(str(generated(f"{program}.{shell}")))


def sources(shell):
    return "\n".join(f"source {file_of(name, shell)}" for name in PROGRAMS)


def last_word(line, separators=" "):
    return re.search(rf"(\\.|'.*|[^{separators}\\'])*$", line).start()


def bash(folder):
    """Asks for all that can be inserted. Bash replaces only what is behind = or : in a word."""
    terminal = Terminal("PS1=\n" + sources("bash") + r"""
        bind '"\C-x": insert-completions'
        bind -x '"\C-t": printf "<<%s>>" "$READLINE_LINE"; READLINE_LINE='""",
                        ["bash", "--rcfile", "HOME/.zshrc", "-i"], folder)

    def ask(line):
        inserted, part = terminal.answer(f"{line}\x18\x14")[1], last_word(line, " =:")
        offered = [] if inserted == line else shlex.split(inserted[part:])
        return [line[last_word(line):part] + text for text in offered], ""
    return terminal.close, ask


def zsh(folder):
    """Asks for a list, which shows the last parts of words only, and for what Tab inserts if that
    is one word."""
    copies = "\n".join(f"cp {file_of(name, 'zsh')} $HOME/_{name}" for name in PROGRAMS)
    terminal = Terminal(f"""PS1=; stty columns 200; fpath=($HOME $fpath)
        {copies}
        autoload -U compinit; compinit -u -D
        setopt no_beep no_always_last_prompt no_auto_menu; LISTMAX=1000
        list() {{ zle list-choices; zle -R }}; zle -N list; bindkey '^X' list
        show() {{ print -rn -- "<<$BUFFER>>"; BUFFER= }}; zle -N show; bindkey '^T' show""",
                        ["zsh", "-o", "no_global_rcs", "-i"], folder)
    terminal.answer("\x14")

    def ask(line):
        shown = terminal.answer(f"{line}\x18\x14")[0]
        inserted = terminal.answer(f"{line}\t\x14")[1]
        items = re.split(r"\s{2,}|[\r\n]+", re.sub(" +-- .*", "", shown.replace("\\ ", " ")))
        known = {part(text) for _, words in LINES for text in words}
        offered = [item for item in items if item in known]
        if len(set(offered)) == 1:
            offered = [shlex.split(inserted)[-1].rstrip(",=")]
        return offered, shown
    return terminal.close, ask


def fish(folder):
    def ask(line):
        script = f"{sources('fish')}\ncomplete -C {shlex.quote(line)}"
        shown = call("fish", "--no-config", "-c", script, cwd=folder)[1]
        return [text.split("\t")[0] for text in shown.splitlines()], shown
    return (lambda: None), ask


def part(text):
    """The last part of a word: of a list, of a path, of --OPTION=ARGUMENT."""
    return re.split("[=,]|/(?=.)", text)[-1]


class Completions(unittest.TestCase):
    def check(self, shell):
        with tempfile.TemporaryDirectory() as above, \
                socket.create_server(("127.0.0.1", 0)) as silent, \
                Controller("--aps", "2", "--switches", "1", "--others", "0") as controller:
            silent_port = str(silent.getsockname()[1])

            def filled(line):
                return line.replace("PORT", controller.port).replace("SILENT", silent_port)
            Path(above, "timeout").write_text(PATIENT.format(silent=silent_port))
            os.chmod(f"{above}/timeout", 0o755)
            path = f"{above}:{os.environ['PATH']}"
            self.enterContext(unittest.mock.patch.dict(os.environ, PATH=path))
            folder = Path(above, "files")
            for name in FILES:
                folder.joinpath(name).parent.mkdir(exist_ok=True, parents=True)
                folder.joinpath(name).touch()
            close, ask = shell(str(folder))
            self.addCleanup(close)
            for line, expected in LINES:
                with self.subTest(line=line):
                    offered = ask(filled(line))[0]
                    if shell is zsh and len(expected) > 1:
                        expected = [part(text) for text in expected]
                    self.assertEqual(*({text.lower().removesuffix("/") for text in words}
                                       for words in (offered, expected)))
            more = FISH_DESCRIPTIONS if shell is fish else []
            for line, texts in DESCRIPTIONS + more if shell is not bash else ():
                shown = ask(filled(line))[1]
                for text in texts:
                    self.assertIn(text, shown)
            if shell is bash:  # it would offer these unquoted behind a comma, and run them
                odd = ["x`id`.json", "x$HOME.json"]
                for name in odd:
                    folder.joinpath(name).touch()
                for line, expected in (("x", odd), ("office.json,x", []),
                                       ("x\\`id\\`.json,o", [])):
                    self.assertEqual(set(ask(f"zov cfg --file {line}")[0]), set(expected), line)

    @needs("bash")
    def test_bash(self):
        self.check(bash)

    @needs("fish")
    def test_fish(self):
        self.check(fish)

    @needs("zsh")
    def test_zsh(self):
        self.check(zsh)


os.environ["PATH"] = f"{tool('')}:{os.environ['PATH']}"
main()
