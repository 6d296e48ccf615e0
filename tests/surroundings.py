# SPDX-License-Identifier: MIT
"""zov where its parent left something unusual: closed descriptors, pipes that do not wait, signals
that are ignored, variables; memory that is short, files of odd kinds.  surroundings.py ZOV"""
import contextlib
import fcntl
import glob
import hashlib
import itertools
import json
import os
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from pathlib import Path

from controllers import serve
from harness import SOURCE, Case, call, main, needs, program, run, start

MAC, MAC_BYTES = "00:11:22:33:44:55", bytes.fromhex("001122334455")


class Parents(Case):
    def test_closed_descriptors_are_not_taken_for_the_connection(self):
        def close(descriptors):
            for one in descriptors:
                os.close(one)
        for closed in ([0], [1], [2], [0, 1], [0, 1, 2]):
            outcome = run(["ac"], b"\0\0" + bytes(24), prepare=lambda: close(closed))
            self.assertEqual((outcome.status, outcome.received), (0, b"\7\0"), closed)
            self.assertEqual(outcome.out != b"", 1 not in closed)
        outcome = run(["ac", "--add"], prepare=lambda: close([0, 1, 2]))
        self.assertEqual((outcome.status, outcome.received), (1, b"\0"))

    def test_a_pipe_that_does_not_wait_gets_the_whole_report(self):
        # The second has one byte more than the pipe holds.
        for devices, output in ((20, bytes(range(32, 127)) * 689), (1, b"x" * 4066)):
            macs = [f"02:00:00:00:00:{i:02x}" for i in range(devices)]
            reply = (b"\0" + len(output).to_bytes(2, "big") + output) * devices
            got = []

            def read_slowly():
                threading.Event().wait(0.3)
                with open(read_end, "rb") as pipe:
                    got.append(pipe.read())
            read_end, write_end = os.pipe()
            fcntl.fcntl(write_end, fcntl.F_SETPIPE_SZ, 4096)
            os.set_blocking(write_end, False)
            reader = threading.Thread(target=read_slowly)
            reader.start()
            outcome = run(["sh", "--mac", ",".join(macs), "--cmd", "x"], reply, output=write_end)
            reader.join()
            self.expect(outcome)
            self.assertTrue(got[0] == b"".join(
                b"WTP %s output:\n%s\n" % (mac.encode(), output) for mac in macs))

    def test_options_count_wherever_they_stand(self):
        outcome = run(["initfw", "word", "--fwstat", "7"], environment={"POSIXLY_CORRECT": "1"},
                      script=[(">", bytes.fromhex("09 00000007"))])
        self.expect(outcome)

    @needs(memory_of=program())
    def test_an_endless_list_costs_its_bytes_until_memory_is_short(self):
        record = bytes([0, 1]) + bytes(79)  # the smallest there is

        def send(client):
            while True:
                client.sendall(record * 10000)
        # Address space for a reply of 128 MiB while that becomes one of 256.
        space = (600 << 20,) * 2
        done = call(program(), "online", "--acport", serve(send),
                    prepare=lambda: resource.setrlimit(resource.RLIMIT_AS, space))
        self.assertEqual(done, (1, "", "ERROR: Out of memory\n"))
        most = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
        self.assertLess(most, 1.1 * (256 << 10) + (4 << 10))


class Passwords(Case):
    """cfg with a password, whose digest md5sum makes in files with known names in /tmp."""

    def send(self, password="secret", script="", err="", **options):
        """One run, with a fake md5sum of this script; FOLDER in it is one where it may write."""
        digest = hashlib.md5(password.encode() + b"\n").digest()
        item = b"\0\x2c\0\0\0\x10" + digest + b"\0\0"
        body = b"\0\1" + MAC_BYTES + b"\3" + bytes(5) + item
        steps = [(">", b"\5\0\0\0" + bytes([len(body)]) + body), ("<", b"\0\0")]
        with tempfile.TemporaryDirectory() as folder:
            if script:
                fake = Path(folder, "md5sum")
                fake.write_text("#!/bin/sh\n" + script.replace("FOLDER", folder))
                fake.chmod(0o700)
            outcome = run(["cfg", "--mac", MAC, "--file", "f"], [] if err else steps,
                          files={"f": json.dumps({"wtp_cfg": {"password": password}}).encode()},
                          environment={"PATH": f"{folder}:{os.environ['PATH']}"}, **options)
            self.assertRegex(outcome.err.decode(), f"^{err}$")
            self.expect(outcome, err=outcome.err)
            return {path.name: path.read_text() for path in Path(folder).iterdir()}

    def test_whatever_has_the_names(self):
        passwords = "it's $HOME `id` \"x\"", "\\n\\\\ %s;|&<>", "-n", "\u00e9\u0080\1", "'" * 255
        with tempfile.TemporaryDirectory() as folder:
            victim, mark = Path(folder, "victim"), Path(folder).name
            victim.touch()
            makers = (lambda path: path.write_text("x" * 1000),
                      lambda path: path.symlink_to(victim),
                      lambda path: Path(path, mark).mkdir(parents=True))
            for password, name, make in itertools.product(passwords, ("pwd", "md5"), makers):
                self.send(password, prepare=lambda: make(
                    Path(f"/tmp/zov.{os.getpid():x}.{name}.tmp")))
                moved = glob.glob(f"/tmp/zov.*.{name}.tmp.*/{mark}")  # a folder, out of the way
                for one in moved:
                    shutil.rmtree(Path(one).parent)
                self.assertEqual(len(moved), int(make is makers[2]))
            self.assertEqual(victim.read_text(), "")

    def test_what_fails(self):
        made = r"'md5sum /tmp/zov\.([0-9a-f]+)\.pwd\.tmp > /tmp/zov\.\1\.md5\.tmp'"
        self.send(script="exit 1", err=f"ERROR: execute {made} error=256\n")
        self.send(script="echo 0123456789abcdef0123456789abcd",
                  err=r"ERROR: read '/tmp/zov\.[0-9a-f]+\.md5\.tmp' failed\.\n")

    def test_nothing_is_inherited_by_shell_commands(self):
        seen = self.send(script="""ls -l /proc/$$/fd >FOLDER/fds
            echo "$*:$(readlink /proc/$$/fd/1)" >FOLDER/names
            stat -c %a "$@" "$(readlink /proc/$$/fd/1)" >FOLDER/modes
            exec /usr/bin/md5sum "$@"
            """, prepare=lambda: (signal.signal(signal.SIGCHLD, signal.SIG_IGN), os.umask(0)))
        self.assertNotIn("socket:", seen["fds"])
        self.assertRegex(seen["names"], r"^/tmp/zov\.([0-9a-f]+)\.pwd\.tmp:/tmp/zov\.\1\.md5\.tmp$")
        self.assertEqual(seen["modes"], "600\n600\n")


class Files(Case):
    """cfg with files that are none, and sizes at their limits."""
    NAME = bytes.fromhex("0001 0000 0003") + b"AP1"

    def configure(self, name, content=b""):
        outcome = run(["cfg", "--mac", MAC, "--file", name], b"\0\0", files={"f": content})
        self.assertEqual((outcome.status, outcome.out), (1 if outcome.err else 0, b""))
        return outcome.err.decode() or outcome.received[19:-3]

    def test_folders_and_pipes(self):
        for folder in (".", "/proc", "/dev/shm"):
            self.assertEqual(self.configure(folder), f"ERROR: read {folder} failed.\n")
        self.assertEqual(self.configure("/dev/null"), b"")
        with tempfile.TemporaryDirectory() as folder:
            pipe = Path(folder, "pipe")
            os.mkfifo(pipe)
            for content, sent in (('{"wtp_cfg":{"name":"AP1"}}', self.NAME), ("", b""),
                                  (" " * 300000 + '{"wtp_cfg":{"name":"AP1"}}', self.NAME)):
                threading.Thread(target=pipe.write_text, args=(content,)).start()
                self.assertEqual(self.configure(str(pipe)), sent)

    def test_the_shell_length_is_the_low_16_bits_of_the_whole(self):
        request = bytes.fromhex("12 000E 0001") + MAC_BYTES + bytes(5) + b"\xff\xff" + b"c" * 65535
        script = [(">", request), ("<", b"\6")]
        self.expect(run(["sh", "--mac", MAC, "--cmd", "c" * 65535], script), status=0,
                    err=f"ERROR: Device {MAC} was not found.\n".encode())
        self.expect(run(["sh", "--mac", MAC, "--cmd", "c" * 65536]),
                    err=b"ERROR: Request of 65536 bytes is too long, at most 65535 fit.\n")


class Ends(unittest.TestCase):
    """A test that ends leaves nothing running, and no file if it is told to end."""

    def descendants(self, process):
        children = Path(f"/proc/{process}/task/{process}/children").read_text().split()
        return [*children, *(below for child in children for below in self.descendants(child))]

    def running(self, processes):
        states = (Path(f"/proc/{process}/stat") for process in processes)
        return [path for path in states if path.exists() and ") Z" not in path.read_text()]

    def test_nothing_is_left_of_a_test(self):
        for number, (name, processes, files, *words) in itertools.product(
                (signal.SIGTERM, signal.SIGKILL),
                (("simulator.py", 1, 0), ("documents.py", 4, 1, SOURCE / "man/ac-sim.1"))):
            with self.subTest(number=number, name=name), tempfile.TemporaryDirectory() as folder:
                test = start([sys.executable, "-B", SOURCE / "tests" / name, program(), *words],
                             stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                             env={**os.environ, "TMPDIR": folder})
                end, found = time.monotonic() + 60, []
                while len(found) < processes or len(os.listdir(folder)) < files:
                    self.assertLess(time.monotonic(), end)
                    time.sleep(0.002)
                    with contextlib.suppress(OSError):  # one ends meanwhile
                        found = self.descendants(test.pid)
                test.send_signal(number)
                self.assertNotEqual(test.wait(20), 0)
                while left := self.running(found):
                    self.assertLess(time.monotonic(), end, left)
                    time.sleep(0.01)
                if number == signal.SIGTERM:
                    self.assertEqual(os.listdir(folder), [])


main()
