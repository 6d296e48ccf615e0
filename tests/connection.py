# SPDX-License-Identifier: MIT
"""What a companion tool says when the controller is not there or breaks off, and what it waits for:
connection.py ZOV AC_SIM SOURCE_FOLDER ZOV_EXPORT
"""
import contextlib
import resource
import socket
import subprocess
import sys
import threading
import time
import unittest
from pathlib import Path

from harness import ADMITTED, Player, main
from simulator import Controller, end_with_test

EXPORT = sys.argv[4]
SANITIZED = b"__asan_init" in Path(EXPORT).read_bytes()  # which takes address space


class Connections(unittest.TestCase):
    def expect(self, port, text, *options, memory=None):
        """One line, which begins with the program's name; WHO stands for the controller's."""
        def prepare():
            end_with_test()
            if memory:
                resource.setrlimit(resource.RLIMIT_AS, (memory, memory))
        done = subprocess.run([EXPORT, "--format", "csv", "--acport", str(port), *options],
                              capture_output=True, timeout=100, text=True, preexec_fn=prepare)
        who = f"the controller at 127.0.0.1:{port}"
        self.assertEqual((done.returncode, done.stdout, done.stderr),
                         (1, "", f"zov-export: {text.replace('WHO', who)}\n"))

    def serve(self, send):
        """The port of a controller that admits a client and lets `send` serve it."""
        listener = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(listener.close)

        def play():
            with listener.accept()[0] as client, contextlib.suppress(OSError):
                client.sendall(ADMITTED)
                send(client)
        threading.Thread(target=play, daemon=True).start()
        return listener.getsockname()[1]

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

    @unittest.skipIf(SANITIZED, "the address sanitizer takes address space")
    def test_memory(self):
        with Controller("--aps", "3000") as controller:
            self.expect(controller.port, "out of memory", memory=30000 << 10)

    def test_trickle(self):
        def trickle(client):
            while True:
                client.sendall(b"\0")
                time.sleep(0.2)
        start = time.monotonic()
        self.expect(self.serve(trickle), "WHO does not complete its reply within 10 s",
                    "--timeout", "1")
        self.assertLess(time.monotonic() - start, 20)

    @unittest.skipIf(SANITIZED, "takes a gigabyte")
    def test_endless_reply(self):
        def flood(client):
            while True:
                client.sendall(bytes(1 << 20))
        self.expect(self.serve(flood), "the reply of WHO is longer than 1 GiB")


if __name__ == "__main__":
    main()
