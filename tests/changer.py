# SPDX-License-Identifier: MIT
"""What the tests of zov-rollout and zov-apply share; the program is the last argument."""
import atexit
import fcntl
import os
import pty
import re
import select
import struct
import subprocess
import sys
import termios
from pathlib import Path

from simulator import end_with_test

SOURCE, PROGRAM = sys.argv[3:5]
FAST = ("--interval", "0.05", "--timeout", "20", "--settle", "0", "--yes")
PORTS = set()
NO_TERMINAL = {"stdin": subprocess.DEVNULL, "start_new_session": True}


@atexit.register
def remove_locks():
    """Of the ports of this test, which are nobody else's."""
    for port in PORTS:
        Path(f"/run/lock/zov-127.0.0.1-{port}").unlink(missing_ok=True)


def start(port, *options, out=subprocess.PIPE, err=subprocess.PIPE, **more):
    PORTS.add(port)
    return subprocess.Popen([PROGRAM, "--acport", str(port), *FAST, *options], stdout=out,
                            stderr=err, **{"preexec_fn": end_with_test, **NO_TERMINAL, **more})


def run(port, *options, **streams):
    process = start(port, *options, **streams)
    out, err = (text.decode() if text is not None else ""
                for text in process.communicate(timeout=60))
    return process.returncode, out, err


def rows(table):
    """The rows of a table by their address: each a list of fields; a field that goes on below is
    put together again."""
    lines = re.sub(r"\n +", " ", table).splitlines()[1:]
    return {line.split()[0]: re.split(r"  +", line)[1:] for line in lines}


def results(table):
    return [row[-1] for row in rows(table).values()]


def ask(port, answer, *options, columns=80):
    """Runs it on a terminal; what that shows, the exit status and standard output."""
    PORTS.add(port)
    ours, theirs = pty.openpty()
    fcntl.ioctl(theirs, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
    process = subprocess.Popen(
        [PROGRAM, "--acport", str(port), *FAST[:-1], *options], stdin=theirs, stderr=theirs,
        stdout=subprocess.PIPE, start_new_session=True,
        preexec_fn=lambda: (end_with_test(), fcntl.ioctl(0, termios.TIOCSCTTY, 0)))
    os.close(theirs)
    shown = b""
    try:
        while select.select([ours], [], [], 20)[0] and (piece := os.read(ours, 9999)):
            shown += piece
            if b"[y/N] " in shown and answer:
                if isinstance(answer, bytes):
                    os.write(ours, answer)
                else:
                    process.send_signal(answer)
                answer = None
    except OSError:  # it has ended
        pass
    os.close(ours)
    out = process.communicate(timeout=9)[0].decode()
    return shown.decode(), process.returncode, out
