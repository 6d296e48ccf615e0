# SPDX-License-Identifier: MIT
"""What the tests of zov-rollout and zov-apply share; a test names the program that it is of."""
import fcntl
import json
import os
import pty
import random
import re
import select
import signal
import struct
import subprocess
import sys
import termios
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from types import SimpleNamespace

import harness
from controllers import Player

PROGRAM = harness.tool(f"zov-{Path(sys.argv[0]).stem}")
FIRST = "02:00:00:00:00:01"
FAST = ("--interval", "0.05", "--timeout", "20", "--settle", "0", "--yes")


def start(port, *options, **more):
    return harness.start([PROGRAM, "--acport", port, *FAST, *options], stdin=subprocess.DEVNULL,
                         stdout=subprocess.PIPE, stderr=subprocess.PIPE, start_new_session=True,
                         **more)


def run(port, *options, **streams):
    return harness.call(PROGRAM, "--acport", port, *FAST, *options, start_new_session=True,
                        **streams)


def rows(table):
    """The rows of a table by their address: each a list of fields; a field that goes on below is
    put together again."""
    lines = re.sub(r"\n +", " ", table).splitlines()[1:]
    return {line.split()[0]: re.split(r"  +", line)[1:] for line in lines}


def results(table):
    return [row[-1] for row in rows(table).values()]


class Script:
    """A controller whose devices show one look after the other as they are listed, the last for
    ever; - when it is not listed, X when nobody is admitted. What a look says, and what requests
    are answered, is the derived class's."""

    def __init__(self, looks, answers):
        self.looks, self.answers = [look.split() for look in looks], answers.split()
        self.met = lambda request: None  # is called for each connection, with None, and request
        self.player = Player(answer=self.play)
        self.port = self.player.port

    def play(self, request):
        self.met(request)
        if request is not None:
            return self.answer(request) if request != b"\0" else b""  # it says goodbye
        gone = self.looks[0][0] == "X"
        if gone:
            self.take(self.looks[0])
        return -1 if gone else b""

    def mac(self, n):
        return bytes((2, 0, 0, 0, 0, n + 1))

    def macs(self, data):
        return [data[i:i + 6] for i in range(0, len(data), 6)]

    def take(self, tokens):
        return tokens.pop(0) if len(tokens) > 1 else tokens[0]

    def shown(self, request, takes=True):
        """The looks that a list request gets, by number; without taking them if so wanted."""
        macs = self.macs(request[7:])
        looks = {n: self.take(looks) if takes else looks[0] for n, looks in enumerate(self.looks)
                 if not macs or self.mac(n) in macs}
        return {n: look for n, look in looks.items() if look != "-"}


def cases(table):
    """The rows of a table: what | looks of a device // of the next | its result // of the next |
    options, exit=STATUS if not 1, sent=REQUESTS that change devices if not 1, NAME=VALUE,VALUE of
    the script | what is said. - is no result, {} the first device, (TEXT)*N so many; # begins
    a comment."""
    table = re.sub(r"\(([^()]*)\)\*(\d+)", lambda found: found[1] * int(found[2]), table)
    table = re.sub(r"(?m)^#.*\n", "", table)
    for row in re.sub(r"\n +", " ", table).strip().replace("{}", FIRST).splitlines():
        what, looks, made, words, says = (*row.split(" | "), "", "")[:5]
        more = dict(word.split("=") for word in words.split() if "=" in word)
        yield SimpleNamespace(
            what=what, looks=looks.split(" // "), results=made.split(" // ") if made != "-" else [],
            status=int(more.pop("exit", 1)), sent=more.pop("sent", "1"), says=says,
            script={name: value.replace(",", " ") for name, value in more.items()},
            options=[word for word in words.split() if "=" not in word])


def play(test, table, play_one):
    """Plays the rows of a table, some at a time, and compares what comes of each with it:
    play_one(case) gives results, exit status, the number of requests and what is said."""
    pool = ThreadPoolExecutor(4)
    test.addCleanup(pool.shutdown, cancel_futures=True)
    for case, played in [(case, pool.submit(play_one, case)) for case in cases(table)]:
        with test.subTest(case.what):
            found, status, sent, err = played.result()
            test.assertEqual((found, status), (case.results, case.status), err)
            test.assertRegex(err, re.compile(case.says, re.S))
            test.assertIn(case.sent, ("*", str(sent)), err)


def end_at_random(test, make, options, sent, check):
    """Ends it by a signal at random moments, each time with another script that `make` makes.
    Nothing is sent after it: sent(script) stays as it is; check(that, results, what is said)."""
    rng = random.Random(seed := int(os.environ.get("ZOV_SEED", time.time_ns() % 10**9)))
    during, count = 0, 200 if os.environ.get("ZOV_LONG") else 6
    for number in range(count):
        script = make()
        process = start(script.port, *options)
        time.sleep(rng.uniform(0, 1.3))
        process.send_signal(rng.choice((signal.SIGINT, signal.SIGTERM, signal.SIGHUP)))
        time.sleep(0.03)  # a request may be on its way
        before = sent(script)
        out, err = (text.decode() for text in process.communicate(timeout=20))
        with test.subTest(seed=seed, number=number, err=err):
            test.assertEqual(sent(script), before)
            if process.returncode == 3 and out:
                during += "not started" in out
                check(before, results(out), err)
    print(f"seed {seed}: {during} of {count} signals between plan and last batch")
    test.assertGreaterEqual(during, count // 8 if count > 9 else 0)


def stop_at_request(test, make, options, is_request):
    """A signal while the controller admits the first request that changes devices: nothing is sent.
    Two while its answer is awaited: the first is acknowledged, the second ends it. `make` makes
    scripts of two devices, which are in two batches."""
    script, events = make(), []
    script.met = events.append
    test.assertEqual(run(script.port, *options)[0], 0)
    first = next(n for n, event in enumerate(events) if event and is_request(event))
    for is_due, signals, ended, status in (
            (lambda _: len(met) == first, [signal.SIGHUP], ("not started", None), 3),
            (lambda event: event and is_request(event), [signal.SIGHUP, signal.SIGTERM],
             ("unknown", "ended by a signal"), 128 + signal.SIGTERM)):
        script, met = make(), []

        def meet(event):
            met.append(event)
            if is_due(event):
                for one in signals:
                    process.send_signal(one)
                    time.sleep(0.3)
        script.met = meet
        process = start(script.port, *options, "--json")
        out, err = (text.decode() for text in process.communicate(timeout=20))
        device, other = json.loads(out)["devices"]
        test.assertEqual((process.returncode, device["result"], device["reason"]),
                         (status, *ended), err)
        test.assertEqual((device["seconds"] is None, other["result"]),
                         (len(signals) == 1, "not started"))
        test.assertIn("stopping", err)
        test.assertEqual(sum(is_request(event) for event in met if event), len(signals) - 1)


def ask(port, answer, *options, columns=80):
    """Runs it on a terminal; what that shows, the exit status and standard output."""
    ours, theirs = pty.openpty()
    fcntl.ioctl(theirs, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
    process = harness.start(
        [PROGRAM, "--acport", port, *FAST[:-1], *options], stdin=theirs, stderr=theirs,
        stdout=subprocess.PIPE, start_new_session=True,
        prepare=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0))
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
