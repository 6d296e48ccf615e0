# SPDX-License-Identifier: MIT
"""What companion tools do when system calls, the controller or other users of the host are against
them: failing.py ZOV

System calls fail one after the other. What is said has to stay true, and what was there before has
to stay or to be replaced whole. Another user prepares files, links, pipes and directories.
"""
import collections
import contextlib
import json
import os
import re
import resource
import shutil
import socket
import stat
import struct
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
NOBODY = 65534  # plays the other user
ACCESS_LIST = "system.posix_acl_access"  # see acl(5): owner, nobody, group, mask, others
ENTRIES = (1, 7, 0, 2, 7, NOBODY, 4, 5, 0, 16, 7, 0, 32, 5, 0)
LET_NOBODY_WRITE = struct.pack("<I" + 5 * "HHI", 2, *ENTRIES)
OTHERS, WRITABLE = "it belongs to another user", "others can write to it"
UNREAD = "no process reads from it"


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


@needs(root=True)  # which can play another user
class OtherUser(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory(prefix="zov-users.")))
        self.folder.chmod(0o1777)
        self.controller = self.enterContext(
            Controller("--aps", "2", "--switches", "1", "--others", "0"))
        self.addCleanup(os.umask, os.umask(0o022))

    def path(self, make, name="f", owner=NOBODY):
        """Something that `make` makes, and that belongs to the other user."""
        path = self.folder / name
        make(path)
        os.chown(path, owner, owner, follow_symlinks=False)
        return path

    def file(self, mode, owner=NOBODY):
        path = self.path(lambda path: path.write_text("old"), owner=owner)
        path.chmod(mode)
        return path

    def run_tool(self, name, *options, wrapper=(), **more):
        words = [*wrapper, tool(name), "--acport", self.controller.port, *options]
        return call(*words, **more)[::2]

    def export(self, *options, form="csv", **more):
        return self.run_tool("zov-export", "--format", form, *options, **more)

    def mode(self, path):
        state = path.lstat()
        return state.st_uid, oct(stat.S_IMODE(state.st_mode))


class Outputs(OtherUser):
    def test_modes_of_others_are_not_taken_over(self):
        new = [(form, None, "0o600") for form in ("json", "ndjson", "cfg")]
        new += [(form, None, "0o644") for form in ("csv", "dot", "prometheus")]
        for form, there, expected in (
                ("csv", (0o6777, NOBODY), "0o644"), ("json", (0o666, NOBODY), "0o600"),
                ("csv", (0o6750, 0), "0o750"), ("ndjson", (0o640, 0), "0o640"), *new):
            with self.subTest(form=form, there=there):
                path = self.file(*there) if there else self.folder / "f"
                self.assertEqual(self.export("--output", path, form=form)[0], 0)
                self.assertEqual(self.mode(path), (0, expected))
                self.assertNotEqual(path.read_text(), "old")
                path.unlink()
        # A file of another group; with a second name, which others can give it; with a list.
        for group, more, expected in (
                (NOBODY, lambda path: None, "0o664"),
                (0, (self.folder / "other").hardlink_to, "0o600"),
                (0, lambda path: os.setxattr(path, ACCESS_LIST, LET_NOBODY_WRITE), "0o600")):
            path = self.file(0o664, owner=0)
            os.chown(path, 0, group)
            more(path)
            self.assertEqual(self.export("--output", path, form="json")[0], 0)
            self.assertEqual((self.mode(path), path.stat().st_gid), ((0, expected), group))
            path.unlink()

    def test_links_that_the_kernel_does_not_follow(self):
        victim = self.folder / "victim"
        link = self.path(lambda path: path.symlink_to(victim), "zov.csv")
        victim.write_text("kept")
        self.assertEqual(self.export("--output", link),
                         (1, f"zov-export: cannot open {link}: {OTHERS}\n"))
        self.assertEqual((victim.read_text(), link.is_symlink()), ("kept", True))
        os.chown(link, 0, 0, follow_symlinks=False)
        refusal = ["strace", "--quiet=all", "-o", "/dev/null", "-P", link,
                   "-e", "inject=openat:error=EACCES:when=2"]
        status, err = self.export("--output", link, wrapper=refusal,
                                  env={**os.environ, "ASAN_OPTIONS": "detect_leaks=0"})
        self.assertEqual((status, err),
                         (1, f"zov-export: cannot open {link}: Permission denied\n"))
        self.assertEqual((victim.read_text(), link.is_symlink()), ("kept", True))
        self.assertEqual(self.export("--output", link), (0, ""))
        self.assertEqual((victim.read_text()[:4], link.is_symlink()), ("mac,", True))

    def test_pipes_and_descriptors(self):
        pipe = self.path(os.mkfifo)
        reader = os.open(pipe, os.O_RDONLY | os.O_NONBLOCK)
        self.addCleanup(os.close, reader)
        self.assertEqual(self.export("--output", pipe),
                         (1, f"zov-export: cannot open {pipe}: {OTHERS}\n"))
        self.assertEqual(os.read(reader, 99), b"")
        os.chown(pipe, 0, 0)
        self.assertEqual(self.export("--output", pipe), (0, ""))
        self.assertEqual(os.read(reader, 4), b"mac,")
        alone = self.path(os.mkfifo, "alone", owner=0)
        self.assertEqual(self.export("--output", alone),
                         (1, f"zov-export: cannot open {alone}: {UNREAD}\n"))
        # Under sudo the terminal and the pipe are the login user's.
        for name in ("-", "/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"):
            ours, theirs = os.pipe()
            os.fchown(theirs, NOBODY, NOBODY)
            with open(ours, "rb") as shown, open(theirs, "wb") as out:
                done = self.export("--output", name, stdout=out, cwd=self.folder)
                self.assertEqual(done, (0, ""), name)
                out.close()
                self.assertEqual(shown.read(4), b"mac,")
        self.assertEqual(self.export("--output", "/dev/fd/77"),
                         (1, "zov-export: cannot write /dev/fd/77: Bad file descriptor\n"))

    def test_link_to_a_directory(self):
        place = self.folder / "place"
        place.mkdir()
        link = self.path(lambda path: path.symlink_to(place), "backup")
        for name in (f"{link}", f"{link}/"):
            self.assertEqual(self.export("--directory", name, form="cfg"),
                             (1, f"zov-export: cannot open {name}: {OTHERS}\n"))
        os.chown(link, 0, 0, follow_symlinks=False)
        self.assertEqual(self.export("--directory", link, form="cfg")[0], 0)
        self.assertEqual(len(os.listdir(place)), 3)

    def test_directories(self):
        for mode, owner, group, why in (
                (0o700, NOBODY, 0, OTHERS), (0o777, 0, 0, WRITABLE), (0o775, 0, NOBODY, WRITABLE),
                (0o1777, 0, 0, ""), (0o1775, 0, NOBODY, ""), (0o775, 0, 0, ""),
                (0o755, 0, NOBODY, ""), (None, 0, 0, ""), (0o755, 0, LET_NOBODY_WRITE, WRITABLE)):
            with self.subTest(mode=mode, owner=owner, group=group):
                directory = self.folder / "backup"
                if mode is not None:
                    directory.mkdir()
                    directory.chmod(mode)
                if group == LET_NOBODY_WRITE:
                    os.setxattr(directory, ACCESS_LIST, group)
                elif mode is not None:
                    os.chown(directory, owner, group)
                status, err = self.export("--directory", directory, form="cfg")
                files = list(directory.iterdir())
                if why:
                    expected = (1, f"zov-export: cannot use {directory}: {why}\n")
                    self.assertEqual((status, err, files), (*expected, []))
                else:
                    self.assertEqual((status, len(files)), (0, 3), err)
                    self.assertEqual(self.mode(directory), (0, oct(mode or 0o700)))
                    self.assertEqual({self.mode(file) for file in files}, {(0, "0o600")})
                shutil.rmtree(directory)


class Changes(OtherUser):
    FAST = "--interval", "0.05", "--settle", "0", "--yes"

    def test_locks(self):
        name = f"zov-127.0.0.1-{self.controller.port}"
        refusal = ["strace", "--quiet=all", "-o", "/dev/null", "-P", f"/run/lock/{name}",
                   "-e", "inject=openat:error=EACCES"]
        refused = f"cannot open /run/lock/{name}: Permission denied; a lock is needed there"
        for folder, expected in ((None, (1, f"zov-rollout: {refused}\n")),
                                 ("tmp", (1, f"zov-rollout: {refused}\n")), (self.folder, (0, ""))):
            os.environ.pop("XDG_RUNTIME_DIR", None)
            variables = {"XDG_RUNTIME_DIR": str(folder)} if folder else {}
            status, err = self.run_tool(
                "zov-rollout", "--mac", AP, *self.FAST, wrapper=refusal,
                env={**os.environ, "ASAN_OPTIONS": "detect_leaks=0", **variables})
            self.assertEqual((status, err if status else ""), expected)
        self.assertTrue((self.folder / name).is_file())

    def test_undo_files(self):
        def change(*words):
            return self.run_tool("zov-apply", *words, *self.FAST,
                                 env={**os.environ, "XDG_STATE_HOME": str(self.folder)})
        file, state = self.file(0o600), self.path(os.mkdir, "zov")
        status, err = change("--undo", file, "--no-save")
        self.assertEqual((status, "that you alone can write to" in err), (2, True), err)
        for owner, status in ((NOBODY, 1), (0, 0)):
            os.chown(state, owner, owner)
            state.chmod(0o700)
            done, err = change("--mac", AP, "--set", "location=x")
            self.assertEqual((done, f"cannot use {state}: {OTHERS}" in err),
                             (status, status == 1), err)

    def test_logs(self):
        def roll_out(log):
            return self.run_tool("zov-rollout", "--mac", AP, *self.FAST, "--log", log)
        for path, why in ((self.path(os.mkfifo, "theirs"), OTHERS), (self.file(0o666), OTHERS),
                          (self.path(os.mkfifo, "alone", owner=0), UNREAD)):
            self.assertEqual(roll_out(path), (1, f"zov-rollout: cannot open {path}: {why}\n"))
            self.assertTrue(path.is_fifo() or path.read_text() == "old")
        log = self.folder / "log"
        self.assertEqual(roll_out(log)[0], 0)
        self.assertEqual(self.mode(log), (0, "0o600"))
        self.assertIn(" done, ", log.read_text())


main()
