#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""zov where its parent left something unusual: closed descriptors, pipes that do not wait, signals
that are ignored, variables; process lists and files of odd kinds.  surroundings.py ZOV"""
import contextlib
import os
import pathlib
import resource
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import unittest

ZOV = sys.argv[1]
MAC, MAC_BYTES = "00:11:22:33:44:55", bytes.fromhex("001122334455")
ADMITTED = bytes([0, 0, 0, 1])


def run(*words, reply=b"", prepare=None, environment=None, read_output=None, input=None):
    """Runs zov on a controller that sends `reply` once; returns (status, output, messages, request)."""
    received = bytearray()

    def serve():
        client, _ = listener.accept()
        with client:
            client.sendall(ADMITTED + reply)
            while block := client.recv(65536):
                received.extend(block)
    with socket.create_server(("127.0.0.1", 0)) as listener:
        listener.settimeout(60)
        thread = threading.Thread(target=serve)
        thread.start()
        command = [ZOV, words[0], "--acport", str(listener.getsockname()[1]), *words[1:]]
        # A session of its own, so that a kill of the wrong process cannot end the test.
        process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   preexec_fn=prepare, start_new_session=True,
                                   env={**os.environ, **(environment or {})})
        if read_output:
            read_output(process.stdout)
        out, err = process.communicate(input, timeout=60)
        thread.join(60)
    return process.returncode, out, err.decode(), bytes(received)


class Parents(unittest.TestCase):
    def test_closed_descriptors_are_not_taken_for_the_connection(self):
        reply = b"\0\0" + bytes(24)
        for closed in ([0], [1], [2], [0, 1], [0, 1, 2]):
            status, out, _, request = run("ac", reply=reply, prepare=lambda: [os.close(fd) for fd in closed])
            self.assertEqual((status, request), (0, b"\7\0"), closed)
            self.assertEqual(out != b"", 1 not in closed)
        self.assertEqual(run("ac", "--add", prepare=lambda: [os.close(fd) for fd in (0, 1, 2)])[::3], (1, b"\0"))

    def test_a_pipe_that_does_not_wait_gets_the_whole_report(self):
        output = bytes(range(32, 127)) * 689
        macs = [f"02:00:00:00:00:{i:02x}" for i in range(20)]
        reply = (b"\0" + len(output).to_bytes(2, "big") + output) * len(macs)
        expected = b"".join(b"WTP %s output:\n%s\n" % (mac.encode(), output) for mac in macs)
        got = []

        def read_slowly(pipe):
            threading.Event().wait(0.3)
            got.append(pipe.read())
        status, _, err, _ = run("sh", "--mac", ",".join(macs), "--cmd", "x", reply=reply,
                                prepare=lambda: os.set_blocking(1, False), read_output=read_slowly)
        self.assertEqual((status, err, got[0] == expected), (0, "", True))

    def test_options_count_wherever_they_stand(self):
        self.assertEqual(run("initfw", "word", "--fwstat", "7", environment={"POSIXLY_CORRECT": "1"}),
                         (0, b"", "", bytes.fromhex("09 00000007 00")))

    @unittest.skipIf(b"__asan_init" in pathlib.Path(ZOV).read_bytes(), "the address sanitizer reserves address space")
    def test_an_endless_list_costs_its_bytes_until_memory_is_short(self):
        record = bytes([0, 1]) + bytes(79)  # the smallest there is
        listener = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(listener.close)

        def serve():
            client, _ = listener.accept()
            with client, contextlib.suppress(OSError):
                client.sendall(ADMITTED)
                while True:
                    client.sendall(record * 10000)
        threading.Thread(target=serve, daemon=True).start()
        # Address space for a reply of 128 MiB while that becomes one of 256.
        process = subprocess.Popen([ZOV, "online", "--acport", str(listener.getsockname()[1])],
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (600 << 20,) * 2))
        out, err = process.communicate(timeout=60)
        self.assertEqual((process.returncode, out, err), (1, b"", b"ERROR: Out of memory\n"))
        self.assertLess(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss, 1.1 * (256 << 10) + (4 << 10))

    def test_nothing_is_inherited_by_shell_commands(self):
        with tempfile.TemporaryDirectory() as folder:
            fake(folder, "md5sum", f"ls -l /proc/$$/fd >{folder}/fds; exec /usr/bin/md5sum \"$@\"")
            document = write(folder, "f", '{"wtp_cfg":{"password":"secret"}}')
            status = run("cfg", "--mac", MAC, "--file", document, reply=b"\0\0", environment=first(folder),
                         prepare=lambda: signal.signal(signal.SIGCHLD, signal.SIG_IGN))[0]
            self.assertEqual(status, 0)
            with open(f"{folder}/fds") as fds:
                self.assertNotIn("socket:", fds.read())


def fake(folder, name, script):
    path = write(folder, name, f"#!/bin/sh\n{script}\n")
    os.chmod(path, 0o700)


def first(folder):
    return {"PATH": f"{folder}:{os.environ['PATH']}"}


def write(folder, name, content):
    path = f"{folder}/{name}"
    with open(path, "w") as file:
        file.write(content)
    return path


class ProcessLists(unittest.TestCase):
    """kill, with a process list that names children of this test only."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.bystander, self.victim = (subprocess.Popen(["sleep", "60"]) for _ in range(2))
        for child in (self.bystander, self.victim):
            self.addCleanup(child.wait)
            self.addCleanup(child.kill)

    def kill(self, *lines, prepare=None):
        write(self.folder, "list", "".join(line + "\n" for line in lines))
        fake(self.folder, "ps", f"cat {self.folder}/list")
        return run("kill", environment=first(self.folder), prepare=prepare)[:3]

    def test_the_number_is_the_first_of_the_line(self):
        other, pid = self.bystander.pid, self.victim.pid
        cut = f"{other} "  # its name stands across two pieces of 511 characters, so it is none
        lines = [f"{cut}{'x' * (509 - len(cut))}/ac -d", " 0 ? S 0:00 /usr/sbin/ac -d", f" -{'0' * 30} ac -d",
                 f" 99999999999 ? S 0:00 /usr/sbin/ac {other}", f" {2**32 + other} ? S 0:00 /usr/sbin/ac -d",
                 f" {'y' * 600} ac -d", f" {pid} {'z' * 600} {other} {'z' * 600} /usr/sbin/ac -d"]
        self.assertEqual(self.kill(*lines), (0, b"", ""))
        self.assertEqual((self.victim.wait(10), self.bystander.poll()), (-signal.SIGKILL, None))

    def test_a_number_across_pieces_is_one_number(self):
        pid = str(self.victim.pid)
        for split in range(1, len(pid)):
            self.assertEqual(self.kill(f"{'-' * (511 - split)}{pid} /usr/sbin/ac -d"), (0, b"", ""))
            self.assertEqual(self.victim.wait(10), -signal.SIGKILL)
            self.victim = subprocess.Popen(["sleep", "60"])
            self.addCleanup(self.victim.wait)
            self.addCleanup(self.victim.kill)
            pid = str(self.victim.pid)

    def test_a_list_that_cannot_be_written(self):
        read_end, write_end = os.pipe()

        def occupy():
            os.mkdir(f"/tmp/zov.ps.{os.getpid()}")
            os.write(write_end, str(os.getpid()).encode())
        status, out, err = self.kill(f" {self.bystander.pid} ? S 0:00 /usr/sbin/ac -d", prepare=occupy)
        made = f"/tmp/zov.ps.{os.read(read_end, 20).decode()}"
        os.rmdir(made)
        os.close(read_end)
        os.close(write_end)
        self.assertEqual((status, out, err), (1, b"", f"ERROR: execute 'ps x > {made}' error=512\n"))
        self.assertIsNone(self.bystander.poll())

    def test_an_ignored_sigchld_changes_nothing(self):
        status = self.kill(f" {self.victim.pid} ? S 0:00 /usr/sbin/ac -d",
                           prepare=lambda: signal.signal(signal.SIGCHLD, signal.SIG_IGN))
        self.assertEqual((status, self.victim.wait(10)), ((0, b"", ""), -signal.SIGKILL))


class Files(unittest.TestCase):
    """cfg with files that are none, and sizes at their limits."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def configure(self, name, **more):
        """What is sent: the items of the request, or the message."""
        status, out, err, request = run("cfg", "--mac", MAC, "--file", name, reply=b"\0\0", **more)
        self.assertEqual((status, out), (1 if err else 0, b""))
        return err or request[19:-3]

    def test_folders_and_pipes(self):
        name = bytes.fromhex("0001 0000 0003") + b"AP1"
        document = '{"wtp_cfg":{"name":"AP1"}}'
        for folder in (self.folder, "/proc", "/dev/shm"):
            self.assertEqual(self.configure(folder), f"ERROR: read {folder} failed.\n")
        os.mkfifo(f"{self.folder}/fifo")
        threading.Thread(target=write, args=(self.folder, "fifo", document)).start()
        self.assertEqual(self.configure(f"{self.folder}/fifo"), name)
        self.assertEqual(self.configure("/dev/stdin", input=document.encode()), name)
        self.assertEqual(self.configure("/dev/stdin", input=(" " * 300000 + document).encode()), name)
        self.assertEqual(self.configure("/dev/stdin", input=b""), b"")
        self.assertEqual(self.configure("/dev/null"), b"")

    def test_long_paths_are_skipped(self):
        long = "n" * 248
        document = f'{{"wtp_cfg":{{"{long}":1,"{long}":[1,{{"x":[2]}}],"name":"AP1"}}}}'
        self.assertEqual(self.configure(write(self.folder, "f", document)), bytes.fromhex("0001 0000 0003") + b"AP1")
        document = f'{{"wtp_cfg":{{"{long}":{{}}}}}}'  # an object without members ends the walk all the same
        status, _, err, request = run("cfg", "--mac", MAC, "--file", write(self.folder, "f", document))
        self.assertEqual((status, err, request), (1, "", b"\0"))

    def test_the_shell_length_is_the_low_16_bits_of_the_whole(self):
        status, _, err, request = run("sh", "--mac", MAC, "--cmd", "c" * 65535, reply=b"\6")
        self.assertEqual(request, bytes.fromhex("12 000E 0001") + MAC_BYTES + bytes(5) + b"\xff\xff" + b"c" * 65535 + b"\0")
        self.assertEqual((status, err), (0, f"ERROR: Device {MAC} was not found.\n"))
        self.assertEqual(run("sh", "--mac", MAC, "--cmd", "c" * 65536),
                         (1, b"", "ERROR: Request of 65551 bytes is too long, at most 65535 fit.\n", b"\0"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=0)
