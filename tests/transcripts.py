# SPDX-License-Identifier: MIT
"""Plays transcripts (see transcripts/README.md) against the program: transcripts.py ZOV FILE...

Each is played as it stands, with the reply in single bytes, and with the reply cut at every byte (a
long one at a hundred); only as it stands under a wrapper.
"""
import os
import re
import sys
import unittest
from pathlib import Path

from harness import ADMITTED, WRAPPER, Case, main, run

ESCAPES = {"t": "\t", "n": "\n", "r": "\r", "\\": "\\", '"': '"', "c": ""}
TOKEN = re.compile(r'(?:[^\s"]|"(?:[^"\\]|\\.)*")+')
TEXTS = ("|", "!", "!!", "+")  # marks that go to the end of their line
MARKS = (*TEXTS, ">", "<", "<end", "=", "~", "-")


def unescape(text):
    def value(found):
        return chr(int(found[2], 16)) if found[2] else ESCAPES[found[1]]
    return re.sub(r"\\(x(..)|.)", value, text).encode("latin-1")


def text_line(text):
    """A line of output; \\c at its end leaves the line end out."""
    return unescape(text) + (b"" if text.endswith("\\c") else b"\n")


def read_bytes(tokens, closing=None):
    """The bytes that an iterator over tokens stands for, up to a closing bracket."""
    out = b""
    for token in tokens:
        if token == closing:
            break
        if token in ("[", "[["):
            inner = read_bytes(tokens, token.replace("[", "]"))
            out += len(inner).to_bytes(2 * len(token), "big") + inner
        elif found := re.fullmatch(r'(8|16|)"(.*)"', token):
            text = unescape(found[2])
            out += (len(text).to_bytes(int(found[1]) // 8, "big") if found[1] else b"") + text
        elif token.startswith("."):
            out += int(token[1:], 16).to_bytes(4, "big")
        elif ":" in token:
            out += bytes(int(part, 16) for part in token.split(":"))
        else:
            pair, _, count = token.partition("*")
            out += bytes.fromhex(pair) * int(count or 1)
    return out


def read_words(tokens):
    """The words of a command line; --WORD*N stands for N of them."""
    for token in tokens:
        word, count = re.fullmatch(r"(--\w+)\*(\d+)|.*", token, re.DOTALL).groups()
        word, count = word or token, count or 1
        yield from [os.fsdecode(unescape(re.sub(r'"((?:[^"\\]|\\.)*)"', r"\1", word)))] * int(count)


class Transcript:
    """A run: what is typed, what both sides send, what is printed, what becomes of the files."""

    def __init__(self, place, parts):
        self.place, self.words, self.steps, self.files, self.gone = place, [], [], None, set()
        self.handshake, self.absent, self.out, self.err, status = ADMITTED, False, b"", b"", None
        for mark, content in parts:
            if mark == "":
                self.words = list(read_words(content))
            elif mark in "><":
                self.steps.append((mark, read_bytes(iter(content))))
            elif mark == "<end":
                self.steps.append(("x",))
            elif mark == "|":
                self.out += text_line(content)
            elif mark in ("!", "!!"):
                self.err += (b"ERROR: " if mark == "!" else b"") + text_line(content)
            elif mark == "+":
                name, _, content = content.partition(" ")
                self.files = self.files or {}
                line = content.encode() + b"\n" if content else b""
                self.files[name] = self.files.get(name, b"") + line
            elif mark == "-":
                self.gone |= set(content)
            elif mark == "=":
                status = int(content[0])
            elif content == ["absent"]:
                self.absent = True
            else:
                self.handshake = read_bytes(iter(content))
        failed = self.err or ("x",) in self.steps or self.handshake != ADMITTED
        self.status = (1 if failed else 0) if status is None else status


def read_transcripts(path):
    """The transcripts of a file."""
    names, cases = {}, []

    def expand(text):
        def value(found):
            return names[found[1]] if found[1] else found[2].strip("()") * int(found[3])
        return re.sub(r"\{(?:(\w+)|(.|\(.*?\))\*(\d+))\}", value, text)
    for number, text in enumerate(re.sub(r"\\\n *", "", path.read_text()).splitlines(), 1):
        if not text.strip() or text.startswith("#"):
            continue
        text = expand(text)
        if found := re.fullmatch(r"let (\w+) = (.*)", text):
            names[found[1]] = found[2]
            continue
        if not text.startswith(" "):
            cases.append((f"{path.name}:{number}", [("", [])]))
        parts = cases[-1][1]
        for found in TOKEN.finditer(text):
            if found[0] == "#":
                break
            if found[0] not in MARKS:
                parts[-1][1].append(found[0])
            elif found[0] in TEXTS:
                parts.append((found[0], text[found.end() + 1:]))
                break
            else:
                parts.append((found[0], []))
    return [Transcript(*case) for case in cases]


class Played(Case):
    def __init__(self, transcript):
        super().__init__("runTest")
        self.transcript = transcript

    def __str__(self):
        return self.transcript.place

    def play(self, steps, out, err, status, **options):
        """One run, with these steps and for this outcome."""
        case = self.transcript
        outcome = run(case.words, steps, handshake=case.handshake, absent=case.absent,
                      files=case.files, **options)
        self.expect(outcome, out, err, status)
        return outcome

    def runTest(self):
        case = self.transcript
        outcome = self.play(case.steps, case.out, case.err, case.status)
        self.assertEqual(set(outcome.files), set(case.files or {}) - case.gone)
        if WRAPPER or sum(len(step[1]) for step in case.steps if len(step) > 1) > 9999:
            return
        self.play(case.steps, case.out, case.err, case.status, pieces=True)
        for at, (mark, *data) in enumerate([] if ("x",) in case.steps else case.steps):
            size = len(data[0]) if mark == "<" else 0
            for cut in range(0, size, 1 + size // 100):
                steps = [*case.steps[:at], ("<", data[0][:cut]), ("x",)]
                outcome = run(case.words, steps, files=case.files)
                with self.subTest(cut=cut):
                    self.assertTrue(case.err.startswith(outcome.err), outcome.err)
                    self.expect(outcome, b"", outcome.err, 1)


def load_tests(*_):
    """The transcripts of the files that were named."""
    files = [Path(name) for name in sys.argv[2:]]
    return unittest.TestSuite([Played(case) for path in files for case in read_transcripts(path)])


if __name__ == "__main__":
    main()
