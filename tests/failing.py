# SPDX-License-Identifier: MIT
"""What companion tools do when system calls or the controller fail them: failing.py ZOV

System calls fail one after the other. What is said has to stay true, and what was there before has
to stay or to be replaced whole.
"""
import collections
import contextlib
import json
import re
import resource
import socket
import tempfile
import time
import unittest
from pathlib import Path

from controllers import AP, Controller, Player, serve
from harness import call, main, needs, program, tool

EXPORT = tool("zov-export")

CALLS = """close connect fchmod fcntl flock fstat fsync getsockopt getxattr linkat lseek mkdir
    mkdirat newfstatat openat pipe2 poll ppoll read readlink recvfrom renameat sendto setsockopt
    socket syncfs unlinkat write""".split()
ERRORS = {"openat": "EIO EOPNOTSUPP", "write": "EIO ENOSPC EAGAIN", "recvfrom": "EIO EINTR EAGAIN",
          "sendto": "EIO EAGAIN", "ppoll": "EIO EINTR"}  # of calls that fail in several ways
PASSES = "EINTR EAGAIN EOPNOTSUPP".split()  # can be tried again, or done otherwise
ESSENTIAL = "fsync linkat renameat syncfs write".split()  # whose failure cannot be success
OLD = "what was there before\n"


@needs("strace", memory_of=program())  # its search for leaks and tracing exclude each other
class FailingCalls(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.controller = self.enterContext(Controller())

    def traced(self, name, words, *options):
        self.trace = self.folder / "trace"
        status, out, err = call("strace", "--quiet=all", "-o", self.trace, *options, tool(name),
                                *words, timeout=20)
        self.assertIn(status, range(4), err)
        return status, out, err

    def each_failing(self, name, words, check):
        """Runs it with each call failing in turn, of many of a kind with some of them, and has
        what comes of it checked: check(run, call, exit status, standard error)."""
        status, _, err = self.traced(name, words(0))
        check(0, "", status, err)
        self.assertEqual(status, 0, err)
        lines, counts = self.trace.read_text().splitlines(), collections.Counter()
        begun = next(n for n, line in enumerate(lines) if line.startswith("prlimit64("))
        own = collections.defaultdict(list)  # what is not the loader's: call -> its numbers
        for number, line in enumerate(lines):
            if ".profraw" in line:  # the end of a program whose coverage is counted
                break
            kind = line.split("(")[0]
            counts[kind] += 1
            if number > begun and kind in CALLS and not re.match(r"write\(2|.*F_GETFD", line):
                own[kind].append(counts[kind])
        self.assertGreater(len(own), 8, own)
        some = [(kind, number, error) for kind, numbers in own.items()
                for number in (numbers if len(numbers) < 9 else numbers[:4] + numbers[-4:])
                for error in ERRORS.get(kind, "EIO").split()]
        hit = 0
        for run, (kind, number, error) in enumerate(some, 1):
            status, _, err = self.traced(name, words(run), "-e", f"trace={kind}", "-e",
                                         f"inject={kind}:error={error}:when={number}")
            failed = re.findall(".*INJECTED.*", self.trace.read_text())
            hit += len(failed)
            with self.subTest(call=failed, number=number, err=err):
                check(run, kind, status, err)
                if failed and kind in ESSENTIAL and error not in PASSES:
                    self.assertNotEqual(status, 0)
        self.assertGreater(hit, 0.9 * len(some))  # how often a controller is asked may vary

    def test_a_file_that_is_replaced(self):
        file = self.folder / "list.json"

        def words(_):
            file.write_text(OLD)
            file.chmod(0o640)
            return "--acport", self.controller.port, "--format", "json", "--output", file

        def check(_, kind, status, err):
            is_old = file.read_text() == OLD
            self.assertTrue(status != 0 or not is_old)
            self.assertRegex(err, r"\A(zov-export: .*\n)\Z" if status else r"\A\Z")
            self.assertEqual(9 if is_old else len(json.loads(file.read_text())["wtp_list"]), 9)
            if kind != "unlinkat":
                self.assertEqual({path.name for path in self.folder.iterdir()},
                                 {"list.json", "trace"})
        self.each_failing("zov-export", words, check)

    def test_a_directory_of_files(self):
        folder = self.folder / "backup"

        def words(_):
            folder.mkdir(exist_ok=True)
            for path in folder.iterdir():
                path.unlink() if path.is_file() else path.rmdir()
            (folder / f"{AP.replace(':', '-')}.json").write_text(OLD)
            return ("--acport", self.controller.port, "--format", "cfg", "--partial",
                    "--directory", folder)

        def check(_, _kind, status, err):
            files = {path.name: path.read_text() for path in folder.iterdir() if path.is_file()}
            for text in files.values():
                self.assertTrue(text == OLD or json.loads(text)["wtp_cfg"], text)
            if status == 0:
                self.assertEqual((len(files), OLD in files.values()), (8, False))
            else:
                self.assertRegex(err, r"\A(zov-export: .*\n)+\Z")
        self.each_failing("zov-export", words, check)

    def test_devices_that_are_changed(self):
        undo, log = self.folder / "undo.json", self.folder / "log"
        before = ["Floor 1"]

        def words(run):
            undo.unlink(missing_ok=True)
            return ("--acport", self.controller.port, "--set", f"location=run {run}", "--mac", AP,
                    "--save", undo, "--log", log, "--yes", "--settle", "0", "--interval", "0.05",
                    "--begin", "2", "--outage", "2")

        def check(run, _, status, err):
            location = self.controller.record(AP)["wtp_cfg"]["location"]
            is_there = location == f"run {run}"
            if status == 0:
                self.assertTrue(is_there)
            else:
                self.assertRegex(err, r"(?m)^zov-apply: ")
            if f"cannot write {undo}" in err:
                self.assertFalse(undo.exists())
            if is_there:  # what it was can be had again
                [device] = json.loads(undo.read_text())["devices"]
                self.assertEqual(device["mac"], AP)
                self.assertEqual(device["settings"]["location"], f'"{before[0]}"')
            before[0] = location
        self.each_failing("zov-apply", words, check)


class Connections(unittest.TestCase):
    def expect(self, port, text, *options, **more):
        """One line, which begins with the program's name; WHO stands for the controller's."""
        done = call(EXPORT, "--format", "csv", "--acport", port, *options, timeout=100, **more)
        who = f"the controller at 127.0.0.1:{port}"
        self.assertEqual(done, (1, "", f"zov-export: {text.replace('WHO', who)}\n"))

    def test_causes(self):
        with socket.socket() as nobody:
            nobody.bind(("127.0.0.1", 0))
            self.expect(nobody.getsockname()[1], "cannot connect to WHO: Connection refused")
        for answer, holds, text in (
                (-1, False, "WHO is busy, try again later"), (7, False, "WHO refuses: answer 7"),
                (None, False, "WHO ended the connection after 0 bytes"),
                (b"\0\1" + bytes(298), False, "WHO ended the connection after 300 bytes"),
                (None, True, "WHO does not answer within 1 s"),
                (bytes(50), True, "WHO does not answer within 1 s")):
            with self.subTest(answer=answer, holds=holds):
                self.expect(Player(answer, holds=holds).port, text, "--timeout", "1")

    def test_controller_that_accepts_nobody(self):
        with socket.create_server(("127.0.0.1", 0), backlog=0) as listener, \
                contextlib.ExitStack() as stack:
            for _ in range(3):  # more than may wait
                waiting = stack.enter_context(socket.socket())
                waiting.setblocking(False)
                waiting.connect_ex(listener.getsockname())
            self.expect(listener.getsockname()[1], "WHO does not answer within 1 s", "--timeout",
                        "1")

    @needs(memory_of=EXPORT)
    def test_memory(self):
        limit = (30000 << 10,) * 2
        with Controller("--aps", "3000") as controller:
            self.expect(controller.port, "out of memory",
                        prepare=lambda: resource.setrlimit(resource.RLIMIT_AS, limit))

    def test_trickle(self):
        def trickle(client):
            while True:
                client.sendall(b"\0")
                time.sleep(0.2)
        start = time.monotonic()
        self.expect(serve(trickle), "WHO does not complete its reply within 5 s", "--timeout",
                    "0.5")
        self.assertLess(time.monotonic() - start, 10)

    @needs(memory_of=EXPORT)
    def test_endless_reply(self):
        def flood(client):
            while True:
                client.sendall(bytes(1 << 20))
        self.expect(serve(flood), "the reply of WHO is longer than 1 GiB")


main()
