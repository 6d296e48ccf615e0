# SPDX-License-Identifier: MIT
"""zov-rollout against ac-sim, and against a controller that plays a script: rollout.py ZOV_ROLLOUT AC_SIM SOURCE"""
import os
import pty
import re
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from harness import Player, main
from simulator import Controller, end_with_test

ROLLOUT, AC_SIM = sys.argv[1:3]
AP1, AP2, AP3 = (f"02:A3:00:00:00:0{n}" for n in (1, 2, 3))  # with a step to the newest version, two, one
FAST = ("--interval", "0.05", "--timeout", "20")


def start(port, *options, out=subprocess.PIPE, err=subprocess.PIPE):
    return subprocess.Popen([ROLLOUT, "--acport", str(port), *FAST, *options], stdout=out, stderr=err,
                            preexec_fn=end_with_test)


def run(port, *options, **streams):
    process = start(port, *options, **streams)
    out, err = (text.decode() if text is not None else "" for text in process.communicate(timeout=60))
    return process.returncode, out, err


def rows(table):
    """The rows of a table by their address: each a list of fields, which two blanks or more part."""
    return {line.split()[0]: re.split(r"  +", line)[1:] for line in table.splitlines()[1:]}


class Simulated(unittest.TestCase):
    def controller(self, *options):
        controller = Controller("--verbose", *options, errors=subprocess.PIPE)
        self.addCleanup(controller.process.stderr.close)
        self.addCleanup(controller.__exit__)
        return controller

    def requests(self, controller):
        """Ends the controller; what it was asked for, in order."""
        controller.process.terminate()
        return re.findall(r"^ac-sim: (list|firmware list|upgrade)$", controller.process.stderr.read(), re.M)

    def test_twelve_devices_in_batches(self):
        controller = self.controller("--aps", "24")
        status, plan, err = run(controller.port, "--all-managed", "--dry-run")
        self.assertEqual((status, err), (0, ""))
        macs = [mac for mac, row in rows(plan).items() if row[-1].startswith("upgrade")][:12]
        self.assertEqual(len(macs), 12)
        status, out, err = run(controller.port, "--mac", ",".join(macs), "--batch", "5", "--period", "7", "--type", "2")
        self.assertEqual((status, list(rows(out))), (0, macs), err)
        self.assertEqual({tuple(row[2:4]) for row in rows(out).values()}, {("2.1.0", "done")})
        events = re.findall(r"batch \d of \d|(?<=zov-rollout: )02\S+(?= \S+: done)", err)
        self.assertEqual([events.index(f"batch {n} of 3") for n in (1, 2, 3)], [0, 6, 12])
        self.assertEqual([set(events[1:6]), set(events[7:12])], [set(macs[:5]), set(macs[5:10])])
        # Again: nothing is left to do.
        status, out, _ = run(controller.port, "--mac", ",".join(macs))
        self.assertEqual((status, {row[-1] for row in rows(out).values()}), (0, {"no newer firmware"}))
        self.assertEqual(run(controller.port, "--name", "nobody*")[::2],
                         (1, "zov-rollout: no device has a name that fits\n"))

    def test_failures_stop_it_and_it_goes_on(self):
        controller = self.controller("--upgrade", f"{AP1}=fail", "--upgrade", f"{AP3}=0.4")
        macs = ("--mac", f"{AP1},{AP2},{AP3}", "--batch", "2")
        status, out, err = run(controller.port, *macs)
        self.assertEqual((status, [row[1:4] for row in rows(out).values()]),
                         (1, [["2.0.1", "2.1.0", "failed"], ["1.4.2", "2.1.0", "done"], ["2.0.1", "-", "not started"]]))
        self.assertIn("stopped: too many failures; started again", err)
        status, out, err = run(controller.port, *macs, "--max-failures", "1", "--batch", "1")
        self.assertEqual((status, [row[3] for row in rows(out).values()]), (1, ["failed", "skipped", "done"]), err)

    def test_deadline_then_it_is_followed(self):
        controller = self.controller("--upgrade", f"{AP1}=hang")
        for _ in range(2):
            status, out, err = run(controller.port, "--mac", AP1, "--deadline", "1")
            self.assertEqual((status, rows(out)[AP1][2:]), (1, ["2.1.0", "timed out", "1", "stayed at 40 %"]), err)
        self.assertEqual(self.requests(controller).count("upgrade"), 1)

    def test_dry_run_asks_only(self):
        controller = self.controller()
        with tempfile.TemporaryDirectory() as folder:
            status, out, _ = run(controller.port, "--name", "ap-*0[12]", "--batch", "1", "--dry-run",
                                 "--log", f"{folder}/log")
            self.assertEqual(os.listdir(folder), [])
        self.assertEqual((status, rows(out)), (0, {AP1: ["ap-floor1-01", "2.0.1", "1", "upgrade"],
                                                   AP2: ["ap-floor1-02", "1.4.2", "2", "upgrade in 2 steps"]}))
        self.assertEqual(self.requests(controller), ["list", "firmware list"])

    def test_signals(self):
        for signals, expected in (([signal.SIGINT], 1), ([signal.SIGTERM, signal.SIGINT], -signal.SIGINT)):
            controller = self.controller("--upgrade", f"{AP1}=1")
            process = start(controller.port, "--mac", f"{AP1},{AP3}", "--batch", "1")
            lines = iter(process.stderr.readline, b"")
            for number, sign in zip(signals, (b"upgrading, ", b"second signal")):
                self.assertTrue(any(sign in line for line in lines))
                process.send_signal(number)
            out, err = (text.decode() for text in process.communicate(timeout=30))
            self.assertEqual(process.returncode, expected)
            if expected == 1:
                self.assertEqual([row[3] for row in rows(out).values()], ["done", "not started"])
                self.assertIn("zov-rollout: stopped by a signal; ", err)
            self.assertEqual(self.requests(controller).count("upgrade"), 1)

    def test_logs_that_take_nothing(self):
        with tempfile.TemporaryDirectory() as folder, open("/dev/full", "w") as full:
            controller = self.controller()
            status, out, err = run(controller.port, "--mac", AP1, "--log", "/dev/full")
            self.assertEqual((status, out, err), (1, "", "zov-rollout: cannot write /dev/full: No space left on device\n"))
            status, _, err = run(controller.port, "--mac", AP1, "--log", f"{folder}/none/log")
            self.assertEqual((status, err.count("cannot open")), (1, 1))
            self.assertNotIn("upgrade", self.requests(controller))
            # One that ends in between: the batch does not.
            os.mkfifo(f"{folder}/pipe")
            reader = os.open(f"{folder}/pipe", os.O_RDONLY | os.O_NONBLOCK)
            os.set_blocking(reader, True)
            process = start(self.controller().port, "--mac", f"{AP1},{AP3}", "--batch", "1", "--log", f"{folder}/pipe")
            while b"\n" not in (line := os.read(reader, 999)):
                time.sleep(0.01)
            self.assertIn(b"roll-out of 2 devices, 0 skipped", line)
            os.close(reader)
            out, err = (text.decode() for text in process.communicate(timeout=30))
            self.assertEqual((process.returncode, [row[3] for row in rows(out).values()]), (1, ["done", "not started"]))
            self.assertIn("Broken pipe; stopping after this batch", err)
            status, _, err = run(self.controller().port, "--mac", AP1, out=full)
            self.assertEqual((status, err.count("cannot write standard output")), (1, 1))

    def test_log_and_bar(self):
        controller = self.controller("--upgrade", f"{AP2}=fail")
        with tempfile.TemporaryDirectory() as folder:
            ours, theirs = pty.openpty()
            Path(f"{folder}/log").write_text("kept\n")
            status, out, _ = run(controller.port, "--mac", f"{AP1},{AP2}", "--log", f"{folder}/log", err=theirs)
            os.close(theirs)
            with open(ours, "rb", buffering=0) as terminal:
                shown = terminal.read(65536).decode()
            kept, *lines = Path(f"{folder}/log").read_text().splitlines()
        self.assertEqual((status, kept), (1, "kept"))
        self.assertRegex(shown, r"\rbatch 1/1 \[#+-+\] +\d+ %  all \[#+-+\] +\d+ %  1 done, 0 failed")
        self.assertRegex(shown, r"\r *\rzov-rollout: \S+ ap-floor1-02: failed: still has its old version\r\n")
        self.assertNotRegex(shown, "\x1b|asked to upgrade")
        for line in lines:
            self.assertRegex(line, r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ \S")
        self.assertEqual([line[21:] for line in lines if AP1 in line],
                         [f"{AP1} ap-floor1-01: {what}" for what in
                          ("asked to upgrade", "upgrading, 2.0.1 -> 2.1.0", "done, 2.0.1 -> 2.1.0 in 0 s")])


def record(mac, name=b"dev", version=b"1.0", state=5, sub=0, flag=0, progress=0, announced=b""):
    """A device without radios and ports, as the list holds it."""
    def text(value):
        return struct.pack(">H", len(value)) + value
    return (b"\0\1" + mac + bytes(6) + text(b"model") + text(b"") + bytes((1, 0, flag)) + text(b"") + text(announced) +
            bytes((0, 0, state, sub, progress)) + text(version) + text(b"") + text(name) + bytes(16 + 20 + 8 + 1))


class Scripted(unittest.TestCase):
    MAC = bytes.fromhex("020000000001")

    def run_script(self, *answers, options=("--all-managed",)):
        player = Player(*answers)
        outcome = run(player.port, *options)
        player.thread.join(20)
        self.assertFalse(player.thread.is_alive())
        return player.requests, outcome

    def test_a_controller_that_is_gone_in_between(self):
        mac, one_step = self.MAC, b"\0\0\1" + self.MAC + b"\0\0"
        quiet, busy = record(mac) + b"\1", record(mac, sub=4, flag=1, progress=9, announced=b"2.0")
        requests, (status, out, err) = self.run_script(
            quiet, one_step, quiet, b"", -1, quiet, b"\x0a", None, busy + b"\1", busy[:40],
            record(mac, state=0, flag=1, announced=b"2.0") + b"\1", 7, record(mac, version=b"2.0") + b"\1",
            options=("--all-managed", "--period", "300", "--type", "1"))
        self.assertEqual((status, rows(out)), (0, {"02:00:00:00:00:01": ["dev", "1.0", "2.0", "done", "0"]}), err)
        everything, this = bytes.fromhex("01 00000007 0000"), bytes.fromhex("01 00000007 0001") + mac
        upgrade = bytes.fromhex("02 0010 0001 0000012c 00000001") + mac
        self.assertEqual(requests, [everything, bytes.fromhex("13 0008 0001") + mac, this, upgrade, this, upgrade,
                                    *[this] * 4])
        self.assertEqual((err.count("; trying again"), err.count("answers again")), (4, 4))
        self.assertNotIn("ERROR", err)

    def test_an_upgrade_without_reply_is_looked_for(self):
        mac, two = self.MAC, bytes.fromhex("020000000002")
        pair = record(mac) + record(two) + b"\1"
        requests, (status, out, err) = self.run_script(
            pair, b"\0\0" + b"\0\2" + mac + two + b"\0\0", pair, b"\0" * 1,  # one result of two
            record(mac, sub=9, flag=1, announced=b"2.0") + record(two) + b"\1", b"\x0a",
            record(mac, version=b"2.0") + record(two, version=b"2.0") + b"\1")
        self.assertEqual((status, [row[3] for row in rows(out).values()]), (0, ["done", "done"]), err)
        self.assertEqual([request[3:5] + request[13:] for request in requests if request[0] == 2],
                         [b"\0\2" + mac + two, b"\0\1" + two])

    def test_one_that_restarts_is_followed_to_its_second_step(self):
        requests, (status, out, err) = self.run_script(
            record(self.MAC, state=0, flag=1, announced=b"1.5") + b"\1", b"\x0c" + bytes(4),
            record(self.MAC, version=b"1.5") + b"\1", b"\0", record(self.MAC, version=b"2.0") + b"\1")
        self.assertEqual((status, [request[0] for request in requests]), (0, [1, 19, 1, 2, 1]), err)
        self.assertEqual(rows(out), {"02:00:00:00:00:01": ["dev", "1.0", "2.0", "done", "0"]})

    def test_a_signal_while_the_controller_is_gone(self):
        player = Player(record(self.MAC) + b"\1", b"\0\0\1" + self.MAC + b"\0\0", *[-1] * 999)
        process = start(player.port, "--all-managed", "--deadline", "30")
        self.assertTrue(any(b"is busy, try again later; trying again" in line for line in process.stderr))
        process.send_signal(signal.SIGINT)
        out, _ = process.communicate(timeout=20)
        self.assertEqual((process.returncode, rows(out.decode())["02:00:00:00:00:01"][3]), (1, "not started"))

    def test_hostile_texts(self):
        texts = [b"\x1b]0;x\x07", b"\xc2\x9b31m", b"\xff\xfe\r\n", "\u202eabc".encode(), b"a\0b", b"\xe2\x82", b"%s%n",
                 "\u20ac".encode() * 999, b"x" * 65535, b""]
        macs = [bytes((2, 0, 0, 0, 1, n)) for n in range(len(texts))]

        def listed(**fields):
            return b"".join(record(mac, text, fields.get("version", text), **{
                "flag": fields.get("flag", 0), "progress": 255, "announced": text[:65534] + b"+"})
                for mac, text in zip(macs, texts)) + b"\1"
        known = bytes(len(macs)) + struct.pack(">H", len(macs)) + b"".join(macs) + b"\0\0"
        with tempfile.TemporaryDirectory() as folder:
            options = ("--all-managed", "--log", f"{folder}/log")
            _, (status, plan, err) = self.run_script(listed(), known, options=(*options, "--dry-run"))
            _, (end, out, told) = self.run_script(
                listed(), known, listed(), b"\x0e" + bytes(len(macs) - 1), listed(flag=1),
                *[listed(version=b"\x1b[2J\xe2\x82")] * 2, options=options)
            log = Path(f"{folder}/log").read_text()
        self.assertEqual((status, end, err), (0, 1, ""))
        for text in (plan, out, told, log):
            self.assertNotRegex(text, "[\0-\x09\x0b-\x1f\x7f-\x9f\u202e\ufffd]")
            self.assertLess(max(map(len, text.splitlines())), 200)
        lines = out.splitlines()
        self.assertEqual({len(line) for line in plan.splitlines()[1:]}, {len(plan.splitlines()[1])})
        self.assertIn("\u20ac" * 29 + "...  ", out)
        self.assertEqual(len(re.findall("came back with version \\?\\[2J\\?\\?", out)), len(texts) - 1)
        self.assertEqual({line.index("failed") for line in lines[1:]}, {lines[0].index("RESULT")})

    def test_a_silent_port(self):
        with socket.create_server(("127.0.0.1", 0)) as listener:
            port, began = listener.getsockname()[1], time.monotonic()
            status, out, err = run(port, "--all-managed", "--timeout", "1")
            self.assertEqual((status, out, err), (1, "", f"zov-rollout: the controller at 127.0.0.1:{port} does not "
                                                         "answer within 1 s\n"))
            self.assertTrue(0.9 < time.monotonic() - began < 10)

    def test_usage(self):
        for words in ((), ("--mac", AP1, "--all-managed"), ("--name", "x", "--mac", AP1), ("--mac", ","), ("--mac", "x"),
                      ("--mac", AP1, "--mac", AP1), ("--all-managed", "x"), *(("--all-managed", f"--{option}", value) for
                      option, value in (("batch", "0"), ("batch", "10001"), ("type", "3"), ("interval", "nan"),
                                        ("interval", "0"), ("deadline", "0"), ("max-failures", "-1"), ("period", "x")))):
            status, out, err = run(1, *words)
            self.assertEqual((status, out, err.count("\n")), (2, "", 1), words)
            self.assertRegex(err, "^zov-rollout: ")
        for bad in ("x=fail", AP1, f"{AP1}=0", f"{AP1}=nan", f"{AP1}=1x", f"{AP1}="):
            self.assertEqual(subprocess.run([AC_SIM, "--upgrade", bad], capture_output=True, timeout=9).returncode, 2)


if __name__ == "__main__":
    main()
