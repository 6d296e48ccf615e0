# SPDX-License-Identifier: MIT
"""Starts programs, plays the controller for one run of zov and keeps what came of it, runs tests.

The first argument of a test is zov; the other programs are beside it. ZOV names another zov,
ZOV_WRAPPER a command to run it under, such as "valgrind -q --error-exitcode=99", or an emulator
"qemu-s390x -0 zov". ZOV_PATIENCE: seconds to wait for it.
"""
import atexit
import contextlib
import ctypes
import importlib.util
import os
import re
import resource
import select
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import unittest
from dataclasses import dataclass, field
from pathlib import Path

SOURCE = Path(__file__).parents[1]
ADMITTED = b"\0\0\0\1"
PR_SET_PDEATHSIG, _prctl = 1, ctypes.CDLL(None).prctl  # see prctl(2)
EXPECTED_SKIP = "not without"  # begins why a test is skipped where all tools have to be there
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
    rows = Path(SOURCE, "src/options/options.h").read_text()
    found = re.findall(r'OPTION\(\w+, "(\w+)", (\w+)_argument', rows)
    return {name: [f"--{name}", *["1"] * (argument == "required")] for name, argument in found}


def program():
    return os.path.abspath(os.environ.get("ZOV") or sys.argv[1])


def tool(name):
    return os.path.join(os.path.dirname(os.path.abspath(sys.argv[1])), name)


def generated(name):
    return Path(tool(""), "../generated", name)


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
    return subprocess.Popen(list(map(str, words)), preexec_fn=begin, **options)


def call(*words, data=None, raw=False, timeout=60, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
         **options):
    """Runs a program to its end, with this text or bytes as its input: its exit status and the
    texts that it wrote; with `raw`, standard output is bytes."""
    data = data.encode() if isinstance(data, str) else data
    stdin = subprocess.DEVNULL if data is None else subprocess.PIPE
    with start(words, stdin=stdin, stdout=stdout, stderr=stderr, **options) as process:
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


def first_difference(got, expected):
    """Where two texts begin to differ, which tells more than all of them."""
    at = len(os.path.commonprefix([got, expected]))
    near = slice(max(0, at - 60), at + 60)
    return f"differs at {at}: {got[near]!r} instead of {expected[near]!r}"


class Case(unittest.TestCase):
    """A test case that compares outcomes."""
    maxDiff = None

    def expect(self, outcome, out=b"", err=b"", status=None):
        """Everything of an outcome; the status is 1 if there is a message, unless it is told."""
        status = (1 if err else 0) if status is None else status
        if outcome.complaint and outcome.err == err:
            self.fail(outcome.complaint)
        self.assertEqual((outcome.err, outcome.status, outcome.complaint), (err, status, ""))
        self.assertEqual(outcome.left, [])
        if outcome.out != out:
            self.fail(f"output {first_difference(outcome.out, out)}")


def is_sanitized(path):
    """Whether it is built with the address sanitizer, which takes address space and memory."""
    return b"__asan_init" in Path(path).read_bytes()


def needs(*programs, modules=(), root=False, memory_of=None):
    """Skips a test when one of these programs or Python modules is missing, when it needs root, or
    memory that the address sanitizer takes from this program."""
    missing = [name for name in programs if shutil.which(name) is None]
    missing += [name for name in modules if importlib.util.find_spec(name) is None]
    if missing:
        return unittest.skip(f"missing: {', '.join(missing)}")
    if memory_of and is_sanitized(memory_of):
        return unittest.skip(f"{EXPECTED_SKIP} the address sanitizer takes memory")
    without = root and os.geteuid() != 0
    return unittest.skipIf(without, f"{EXPECTED_SKIP} root")


class Result(unittest.TextTestResult):
    """Tells what is skipped. Where all that tests need has to be there, with
    ZOV_TEST_TOOLS_REQUIRED, that is a failure, but for root and memory. A test that is told to end
    cleans up, and is the last."""

    def startTestRun(self):
        signal.signal(signal.SIGTERM, self.end)

    def end(self, *_):
        self.failfast = True
        self.stop()
        sys.exit("told to end")

    def addSkip(self, test, reason):
        super().addSkip(test, reason)
        print(f"skipped: {test}: {reason}", flush=True)
        if "ZOV_TEST_TOOLS_REQUIRED" in os.environ and not reason.startswith(EXPECTED_SKIP):
            self.addFailure(test, (AssertionError, AssertionError(reason), None))


def main():
    """Runs the tests of the calling file up to the first failure, with ZOV_KEEP_GOING=1 all."""
    signal.signal(signal.SIGPIPE, signal.SIG_IGN)
    runner = unittest.TextTestRunner(verbosity=0, failfast="ZOV_KEEP_GOING" not in os.environ,
                                     resultclass=Result)
    unittest.main(argv=sys.argv[:1], testRunner=runner)
