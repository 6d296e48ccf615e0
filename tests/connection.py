# SPDX-License-Identifier: MIT
"""What a companion tool says when the controller is not there or breaks off, and what it waits for:
connection.py ZOV
"""
import contextlib
import resource
import socket
import time
import unittest

from controllers import Controller, Player, serve
from harness import call, main, needs, tool

EXPORT = tool("zov-export")


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
