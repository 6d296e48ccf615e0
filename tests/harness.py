# SPDX-License-Identifier: MIT
"""Plays the controller for one run of the real program, and keeps what came of it.

ZOV names the program (else the first argument of the test does), ZOV_WRAPPER a command to run it
under, such as "valgrind -q --error-exitcode=99", or an emulator "qemu-s390x -0 zov".
ZOV_PATIENCE: seconds to wait for it.
"""
import atexit
import contextlib
import ctypes
import importlib.util
import itertools
import os
import re
import resource
import select
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import threading
import unittest
from dataclasses import dataclass, field
from pathlib import Path

ADMITTED = b"\0\0\0\1"
PR_SET_PDEATHSIG, _prctl = 1, ctypes.CDLL(None).prctl  # see prctl(2)
MINUTE = 60  # of processor time that a program may take
TIME_ZONE = "TST-1:30"  # local time is 90 minutes ahead
WRAPPER = os.environ.get("ZOV_WRAPPER", "").split()
PATIENCE = int(os.environ.get("ZOV_PATIENCE", 60 if WRAPPER else 5))  # seconds of silence

_listener = socket.create_server(("127.0.0.1", 0), backlog=8)
_deaf = socket.socket()
_deaf.bind(("127.0.0.1", 0))
atexit.register(_listener.close)
atexit.register(_deaf.close)


def option_words():
    """A command line's words for each option that there is, by its name."""
    rows = Path(__file__).parents[1].joinpath("src/options/options.h").read_text()
    found = re.findall(r'OPTION\(\w+, "(\w+)", (\w+)_argument', rows)
    return {name: [f"--{name}", *["1"] * (argument == "required")] for name, argument in found}


def program():
    """The path of the program under test."""
    return os.path.abspath(os.environ.get("ZOV") or sys.argv[1])


@dataclass
class Outcome:
    """What a run left behind; `complaint` is what the controller missed, or nothing."""
    out: bytes = b""
    err: bytes = b""
    status: int = -1  # exit status, or 128 + signal
    received: bytes = b""
    sent: int = 0  # bytes of replies
    complaint: str = ""
    left: list = field(default_factory=list)  # temporary files that are still there
    files: list = field(default_factory=list)  # names in the run's folder


def start(words, prepare=None, **options):
    """Starts a program that ends with this test, however that ends. `prepare` is called in the new
    process."""
    def begin():
        _prctl(PR_SET_PDEATHSIG, signal.SIGKILL)
        if os.getppid() != test:
            os._exit(1)
        if prepare:
            prepare()
    test = os.getpid()
    return subprocess.Popen(words, preexec_fn=begin, **options)


def call(*words, data=None, raw=False, timeout=60, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
         **options):
    """Runs a program to its end, with these bytes as its input: its exit status and the texts that
    it wrote; with `raw`, standard output is bytes."""
    stdin = subprocess.DEVNULL if data is None else subprocess.PIPE
    with start(list(map(str, words)), stdin=stdin, stdout=stdout, stderr=stderr,
               **options) as process:
        try:
            out, err = (text or b"" for text in process.communicate(data, timeout))
        finally:
            process.kill()
    return process.returncode, out if raw else out.decode(), err.decode()


class Complaint(Exception):
    """What the controller did not get, or got instead."""


def _receive(client, size, outcome, expected=b"\0"):
    start = len(outcome.received)
    end = start + size
    try:
        while piece := client.recv(min(end - len(outcome.received), 1 << 20)):
            outcome.received += piece
    except TimeoutError:
        came = outcome.received[start:].hex() or "nothing"
        raise Complaint(f"timed out: {outcome.sent} bytes of replies were sent, then "
                        f"{expected.hex()} was expected and {came} came") from None
    return outcome.received[start:]


def _send(client, data, outcome):
    client.sendall(data)
    outcome.sent += len(data)


def _serve(client, script, handshake, pieces, outcome):
    client.settimeout(PATIENCE)
    client.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    client.sendall(handshake)
    if isinstance(script, bytes):
        _send(client, script, outcome)
        _receive(client, 1 << 20, outcome)
        return
    for kind, *data in script:
        if kind == "x":
            client.shutdown(socket.SHUT_WR)
        elif kind == "<" and pieces:
            for byte in data[0]:
                _send(client, bytes([byte]), outcome)
        elif kind == "<":
            _send(client, data[0], outcome)
        elif (got := _receive(client, len(data[0]), outcome, data[0])) != data[0]:
            raise Complaint(f"request {got.hex()} instead of {data[0].hex()}")
    goodbye = b"\0" if handshake == ADMITTED else b""
    if (rest := _receive(client, 1 << 20, outcome)) != goodbye:
        raise Complaint(f"at the end {rest.hex()} instead of {goodbye.hex()}")


def run(words, script=(), *, handshake=ADMITTED, absent=False, pieces=False, environment=None,
        files=None, output=None, prepare=None):
    """Runs the program with these words, in a folder with these files (name: bytes), and plays the
    script.

    A script is a list of (">", bytes) to expect, ("<", bytes) to send and ("x",) to hang up; the
    goodbye byte is expected behind it. Or it is the bytes of all replies, whatever is asked.
    `absent`: nobody listens. `pieces`: replies go out byte by byte. `output`: a file or its
    descriptor that standard output is, instead of being kept. `prepare` is called in the new
    process.
    """
    outcome, zov = Outcome(), program()
    port = (_deaf if absent else _listener).getsockname()[1]
    words = [*words[:1], "--acport", str(port), *words[1:]] if words else []
    variables = {**os.environ, "TZ": TIME_ZONE, **(environment or {})}
    if WRAPPER:  # it looks for the program in PATH, by the name that the usage text shows
        variables["PATH"] = f"{os.path.dirname(zov)}:{variables['PATH']}"
    with contextlib.ExitStack() as stack:
        folder = "/"
        if files is not None:
            folder = stack.enter_context(tempfile.TemporaryDirectory(prefix="zov-test."))
        for name, content in (files or {}).items():
            with open(os.path.join(folder, name), "wb") as file:
                file.write(content)
        out, err = (stack.enter_context(open(os.memfd_create(name), "r+b"))
                    for name in ("out", "err"))
        stdout = stack.enter_context(open(output, "wb")) if output else out
        name = zov if "-0" in WRAPPER else "zov"  # an emulator is told what it calls the program
        process = start([*WRAPPER, name, *words], prepare, executable=None if WRAPPER else zov,
                        cwd=folder, env=variables, stdin=subprocess.DEVNULL, stdout=stdout,
                        stderr=err, start_new_session=True)  # where a wrong kill finds no test
        resource.prlimit(process.pid, resource.RLIMIT_CPU, (MINUTE, MINUTE + 1))
        end = os.pidfd_open(process.pid)
        stack.callback(os.close, end)
        try:
            if not absent:
                ready = select.select([_listener, end], [], [], PATIENCE)[0]
                if _listener not in ready:
                    raise Complaint("no client came")
                with _listener.accept()[0] as client:
                    _serve(client, script, handshake, pieces, outcome)
        except (Complaint, OSError) as error:
            outcome.complaint = str(error) or repr(error)
        if not select.select([end], [], [], PATIENCE)[0]:
            process.kill()
            outcome.complaint += " and the program does not end"
        process.wait()
        outcome.status = process.returncode if process.returncode >= 0 else 128 - process.returncode
        names = (f"ps.{process.pid}", f"{process.pid:x}.pwd.tmp", f"{process.pid:x}.md5.tmp")
        outcome.left = [name for name in names if os.path.lexists(f"/tmp/zov.{name}")]
        outcome.files = os.listdir(folder) if files is not None else []
        for stream, name in ((out, "out"), (err, "err")):
            stream.seek(0)
            setattr(outcome, name, stream.read())
    return outcome


class Player:
    """A controller that plays to one client after the other, each the next of the answers: bytes
    for whatever it asks, a number in place of its admission, None for neither. It ends a connection
    then; with `holds` it leaves that to the client. Keeps the requests. Or `answer(request)` gives
    the reply to any request, and a number for the request None refuses the client.
    """

    def __init__(self, *answers, holds=False, answer=None):
        self.listener, self.requests = socket.create_server(("127.0.0.1", 0), backlog=64), []
        self.port = str(self.listener.getsockname()[1])
        threading.Thread(target=self._play, args=(answers, holds, answer), daemon=True).start()

    def _play(self, answers, holds, answer):
        for fixed in answers or itertools.repeat(None):
            with self.listener.accept()[0] as client, contextlib.suppress(OSError):
                fixed = answer(None) if answer else fixed
                if isinstance(fixed, int):
                    client.sendall(struct.pack(">i", fixed))
                elif fixed is not None or answer:
                    client.sendall(ADMITTED)
                    if request := client.recv(1 << 16):
                        self.requests.append(request)
                        client.sendall(answer(request) if answer else fixed)
                if not holds:
                    client.shutdown(socket.SHUT_WR)
                while client.recv(1 << 16):
                    pass
        self.listener.close()


def first_difference(got, expected):
    """Where two texts begin to differ, which tells more than all of them."""
    at = len(os.path.commonprefix([got, expected]))
    near = slice(max(0, at - 60), at + 60)
    return f"differs at {at}: {got[near]!r} instead of {expected[near]!r}"


class Case(unittest.TestCase):
    """A test case that compares outcomes."""
    maxDiff = None

    def needs_memory(self):
        if b"__asan_init" in Path(program()).read_bytes():
            self.skipTest("the address sanitizer takes address space")

    def expect(self, outcome, out=b"", err=b"", status=None):
        """Everything of an outcome; the status is 1 if there is a message, unless it is told."""
        status = (1 if err else 0) if status is None else status
        if outcome.complaint and outcome.err == err:
            self.fail(outcome.complaint)
        self.assertEqual((outcome.err, outcome.status, outcome.complaint), (err, status, ""))
        self.assertEqual(outcome.left, [])
        if outcome.out != out:
            self.fail(f"output {first_difference(outcome.out, out)}")


def needs(*programs, modules=()):
    """Skips a test when one of these programs or Python modules is missing. Where all of them have
    to be there, with ZOV_TEST_TOOLS_REQUIRED, that is a failure."""
    missing = [name for name in programs if shutil.which(name) is None]
    missing += [name for name in modules if importlib.util.find_spec(name) is None]
    if missing and "ZOV_TEST_TOOLS_REQUIRED" in os.environ:
        sys.exit(f"missing: {', '.join(missing)}")
    return unittest.skipIf(missing, f"missing: {', '.join(missing)}")


def main():
    """Runs the tests of the calling file up to the first failure, with ZOV_KEEP_GOING=1 all."""
    signal.signal(signal.SIGPIPE, signal.SIG_IGN)
    unittest.main(argv=sys.argv[:1], verbosity=0, failfast="ZOV_KEEP_GOING" not in os.environ)
