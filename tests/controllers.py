# SPDX-License-Identifier: MIT
"""Controllers for tests: the simulated one, and one that plays what it is told."""
import atexit
import contextlib
import itertools
import json
import select
import signal
import socket
import struct
import subprocess
import tempfile
import threading
from pathlib import Path

from harness import ADMITTED, call, program, start, tool

AP, SWITCH = "02:A3:00:00:00:01", "02:A2:00:00:00:01"  # of simulated devices
PORTS = set()  # of all of them


@atexit.register
def remove_locks():
    """Of tools that changed devices, by the ports of this test, which are nobody else's."""
    for port in PORTS:
        Path(f"/run/lock/zov-127.0.0.1-{port}").unlink(missing_ok=True)


def is_switch(mac):
    return mac[:5] == SWITCH[:5]


def ac_sim(*options, **more):
    return call(tool("ac-sim"), "--port", "0", *options, timeout=10, **more)


class Controller:
    def __init__(self, *options, errors=subprocess.DEVNULL, prepare=None):
        self.process = start([tool("ac-sim"), "--port", "0", *options], prepare, text=True,
                             stdout=subprocess.PIPE, stderr=errors)
        assert select.select([self.process.stdout], [], [], 30)[0], "ac-sim does not say its port"
        self.port = self.process.stdout.readline().strip().rsplit(":", 1)[1]
        PORTS.add(self.port)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.end(signal.SIGTERM)

    def end(self, number):
        self.process.send_signal(number)
        try:
            return self.process.wait(10)
        finally:
            self.process.kill()
            self.process.stdout.close()

    def client(self, *requests):
        """An admitted client that has sent something, as bytes or hexadecimal text."""
        client = socket.create_connection(("127.0.0.1", int(self.port)), timeout=20)
        assert client.recv(4, socket.MSG_WAITALL) == b"\0\0\0\1"
        for request in requests:
            client.sendall(bytes.fromhex(request) if isinstance(request, str) else request)
        return client

    def replies(self, *requests):
        """All that a client gets before its connection is ended."""
        with self.client(*requests) as client, client.makefile("rb") as replies:
            return replies.read()

    def run(self, command, *options):
        return call(program(), command, "--acport", self.port, *options)

    def ok(self, command, *options):
        status, out, err = self.run(command, *options)
        assert status == 0 and err == "", (command, options, status, err)
        return out

    def record(self, mac):
        report = self.ok("wtps", "--json", "--password", "--mac", mac)
        return json.loads("{" + report + "}")["wtp_list"][0]

    def send_items(self, mac, items, times=1):
        """The reply to a configuration for a device that is named so many times."""
        kind, macs = b"\2" if is_switch(mac) else b"\3", bytes.fromhex(mac.replace(":", "")) * times
        body = struct.pack(">H", times) + macs + kind + bytes(5) + items + b"\0\0"
        return self.replies(b"\5" + struct.pack(">I", len(body)) + body, "00")

    def configure(self, mac, cfg):
        with tempfile.NamedTemporaryFile("w", suffix=".json") as file:
            json.dump({"wtp_cfg": cfg}, file)
            file.flush()
            self.ok("cfg", "--mac", mac, "--type", int(is_switch(mac)), "--file", file.name)


class Player:
    """A controller that plays to one client after the other, each the next of the answers: bytes
    for whatever it asks, a number in place of its admission, None for neither. It ends a connection
    then; with `holds` it leaves that to the client. Keeps the requests. Or `answer(request)` gives
    the reply to any request, and a number for the request None refuses the client.
    """

    def __init__(self, *answers, holds=False, answer=None):
        self.listener, self.requests = socket.create_server(("127.0.0.1", 0), backlog=64), []
        self.port = str(self.listener.getsockname()[1])
        PORTS.add(self.port)
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


def serve(send):
    """The port of a controller that admits a client and lets `send` serve it."""
    def play():
        with listener, listener.accept()[0] as client, contextlib.suppress(OSError):
            client.sendall(ADMITTED)
            send(client)
    listener = socket.create_server(("127.0.0.1", 0))
    threading.Thread(target=play, daemon=True).start()
    return listener.getsockname()[1]
