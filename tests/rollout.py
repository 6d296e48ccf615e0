# SPDX-License-Identifier: MIT
"""zov-rollout against ac-sim and a controller that plays a script: rollout.py ZOV

ZOV_LONG=1: 200 signals at random moments, with the seed ZOV_SEED.
"""
import fcntl
import json
import os
import re
import signal
import struct
import tempfile
import time
import unittest
from pathlib import Path

import changer
import jsonschema
from changer import PROGRAM, ask, results, rows, run, start
from controllers import Controller
from harness import SOURCE, call, main

KINDS = {"02:A1": "other", "02:A2": "switch", "02:A3": "access_point"}
# One step from the newest, two, one, one.
AP1, AP2, AP3, AP5 = (f"02:A3:00:00:00:0{n}" for n in (1, 2, 3, 5))


class Script(changer.Script):
    """A look is a version and marks: r restarted, o offline, u unmanaged, c state changed, eN
    upgrade state N, bV busy with version V announced. `steps` are the upgrades left at each
    question (a digit for all devices or each), ? is success in neither list, d denied, x no answer;
    `answers` those to requests. Requests are kept."""

    def __init__(self, looks, steps="1 0", answers="0"):
        self.steps, self.number = steps.split(), 0  # of lists
        super().__init__(looks, answers)

    def answer(self, request):
        if request[0] == 1:
            self.number += 1
            return b"".join(self.record(n, look)
                            for n, look in self.shown(request).items()) + b"\1"
        if request[0] == 19:
            return self.answer_steps(self.macs(request[5:]))
        answer = self.take(self.answers)
        return b"" if answer == "x" else bytes([int(answer)]) * len(self.macs(request[13:]))

    def answer_steps(self, macs):
        token = self.take(self.steps)
        if token == "x":
            return b""
        steps = {mac: (token * 99)[mac[5] - 1] for mac in macs}
        lists = [b"".join(mac for mac in macs if steps[mac] == n) for n in "12"]
        return (bytes({"0": 5, "d": 14}.get(steps[mac], 0) for mac in macs) +
                b"".join(struct.pack(">H", len(some) // 6) + some for some in lists))

    def record(self, n, look):
        def text(value):
            return struct.pack(">H", len(value.encode())) + value.encode()
        parts = re.fullmatch(r"([\d.]*)([ruoce\d]*)(b?)(.*)", look)
        version, marks, busy, announced = parts.groups()
        number = re.search(r"e(\d)", marks)
        return (b"\0\1" + self.mac(n) + bytes(6) + text("model") + text("") +
                bytes(["u" not in marks, 0, busy == "b"]) + text("") + text(announced) +
                bytes([int(number[1]) if number else 0, 0, 0 if "o" in marks else 5,
                       4 if busy else 0, 40 if busy else 0]) + text(version) + text("") +
                text(self.name(n)) +
                struct.pack(">4I", 0 if "r" in marks else 9999, 1, 1, 1 + marks.count("c")) +
                bytes(20 + 8 + 1))

    def name(self, n):
        return f"dev-{n}"

    def requests(self):
        return [request[0] for request in self.player.requests]


CASES = r"""
as usual | 1 1 1b2 1o 2r | done | exit=0
some in two steps, some in one | 1 1 1b2 1o 2r // 1 1 1b2 2r 2r 2b3 3o 3r | done // done
    | exit=0 sent=2 steps=12
one after the other | 1 1 1b2 1o 2r // 1 1 1b2 1o 2r | done // done | --batch 1 exit=0 sent=2
no announcement, nothing newer | 1 1 1o 2r | done | exit=0 steps=1,0
asked again for what is newer | 1 1 1o 2r | done | exit=0 steps=1,d,0
it settles | 1 1 1b2 2r 2r 2rc 2r | done | --settle 0.4 exit=0
it does not settle | 1 1 1b2 1o (2rc 2r )*99 | timed out: not settled in time
    | --settle 0.3 --deadline 2
no restart is seen | 1 1 1b2 2 | timed out: was not seen to restart | --deadline 1
it hangs | 1 1 1b2 | timed out: stayed at 40 % | --deadline 1
not listed | 1 1 1b2 - | timed out: not in the list any more | --deadline 1
away for good | 1 1 1b2 1o | timed out: offline | --deadline 1
it does not begin | 1 1 1e5 | failed: did not begin (upgrade state 5) | --begin 0.3
it begins late | 1 (1 )*30 1b2 1o 2r // 1 1 1b2 (1b2 )*60 1o 2r | done // done
    | --begin 0.3 --max-failures 9 exit=0 sent=*
away when it is its turn | 1 1o | failed: offline | --begin 0.3 sent=0
# Ten seconds are given to what comes back with another version than was announced.
its old version | 1 1 1b2 1 | failed: came back with its old version
another version | 1 1 1b2 3r | failed: came back with version 3
no version | 1 1 1b2 r | failed: came back with version -
announced nothing | 1 1 1b 2r | failed: came back with version 2
first the old one | 1 1 1b2 (1 )*110 1b2 (1 )*110 1b2 1o 2r | done | exit=0
one that runs is judged | 1b3 1b3 1o 3r // 1 | failed: announces version 3 // not started
    | --to 2 exit=3 sent=0
and is the only one | 1b3 1b3 1o 3r | failed: announces version 3 | --to 2 sent=0
    | {} announces version 3
another is announced | 1 1 1b3 1o 3r // 1 | failed: announces version 3 // not started
    | --to 2 --batch 1 --max-failures 9 exit=3 | stopped: .* announces version 3
it has it | 2 | up to date | --to 2 exit=0 sent=0
a newer one | 3 | skipped: has a newer version | --to 2 sent=0
it got it meanwhile | 1 2 | up to date | --to 2 exit=0 sent=0
it got a newer one meanwhile | 1 3 | skipped: has a newer version | --to 2 sent=0
it goes back from that | 1 3 3 3b2 3o 2r | done | --to 2 --allow-older exit=0 steps=1
from a newer one | 3 3 3b2 3o 2r | done | --to 2 --allow-older exit=0
nothing newer at all | 1 | skipped: no newer firmware | --to 2 sent=0 steps=0
nothing newer by now | 1 | up to date | exit=0 answers=5
others began it | 1 2b3 3r | done | exit=0 sent=0
others did a step | 1 2 2 2b3 3r | done | exit=0 steps=1,1
an older version | 2 2 2b1 // 2 | failed: announces the older version 1 // not started
    | --batch 1 --max-failures 9 exit=3
an older version may be | 2 2 2b1 2o 1r | done | --allow-older exit=0
the image was replaced | 1 1 1b2 1o 2r // 1 1 1b3 1o 3r // 1 | done // done // not started
    | --batch 1 exit=3 sent=2 | was replaced
a lost reply | 1 1 1 1b2 1o 2r | done | exit=0 sent=2 answers=x,0
a lost reply, and busy by it | 1 1 1 1b2 2r | done | exit=0 sent=2 answers=x,10
busy, then not ready, then yes | 1 1 1 1 1b2 1o 2r | done | exit=0 sent=3 answers=10,17,0
no response, away, then yes | 1 1 1o 1 1 1b2 2r | done | exit=0 sent=2 answers=12,0
every reply lost | 1 | failed: did not begin | --begin 0.3 sent=* answers=x
never ready | 1 | failed: Device {} is not ready. | --begin 0.3 sent=* answers=17
too many failures keep others of the batch from beginning | 1 // 1 1o 1 1b2 1o 2r
    | failed: Device {} denied this operation. // not started | exit=3 answers=14,0
in neither list | 1 | skipped: the controller does not say how many upgrades it needs
    | sent=0 steps=?
not told | 1 | skipped: Device {} denied this operation. | sent=0 steps=d
no answer to that | 1 | - | sent=0 steps=x | ended the connection after 0 bytes
unmanaged, busy | 1ub2 | skipped: not under management | --name * sent=0
unmanaged by now | 1 1u | skipped: not under management | --name * sent=0
unmanaged, busy by now | 1 1ub2 | skipped: not under management | sent=0
unmanaged between two steps | 1 1 1b2 2ru | failed: not under management | steps=2
the first step was the last | 1 1 2r 2r | done | exit=0 sent=2 steps=2,1 answers=0,5
nothing between two versions | 1 1 1b2 2r | failed: no newer firmware
    | --to 3 steps=2 answers=0,5 sent=2
followed, and fails | 1b2 // 1 1 1b2 1o 2r | timed out: stayed at 40 % // done | --deadline 1
followed, and another version | 1b2 1o 3r | failed: came back with version 3 | sent=0
the controller is gone | 1 1 1b2 X // 1 | unknown: the controller did not answer // not started
    | --outage 0.3 --batch 1 exit=3 | goes on with the rest
for a while | 1 1 1b2 X X 1b2 X 1o 2r | done | --deadline 3 exit=0
    | busy, try again later; trying again\n.*answers again
the controller answers every second time | 1 1 1b2 (X 1b2 )*40 | timed out: stayed at 40 %
    | --deadline 1
busy all the time | X | - | --timeout 0.7 sent=0 | is busy, try again later
busy while planning | X X 1 1 1b2 1o 2r | done | exit=0
"""


class Scripted(unittest.TestCase):
    def test_cases(self):
        def play(case):
            script = Script(case.looks, **case.script)
            selection = () if "--name" in case.options else ("--all-managed",)
            status, out, err = run(script.port, *selection, *case.options)
            return results(out), status, script.requests().count(2), err
        changer.play(self, CASES, play)

    def test_the_request(self):
        script = Script(["1 1 1b2 1o 2r"])
        run(script.port, "--mac", "02:00:00:00:00:01", "--period", "300", "--type", "1")
        mac, everything = script.mac(0), bytes.fromhex("01 00000007 0000")
        self.assertEqual(script.player.requests[:4], [
            everything, bytes.fromhex("13 0008 0001") + mac,
            bytes.fromhex("01 00000007 0001") + mac,
            bytes.fromhex("02 0010 0001 0000012c 00000001") + mac])

    def test_a_hangup_that_is_ignored(self):
        script = Script(["1 1 1b2 1b2 1b2 1b2 1o 2r"])
        process = start(script.port, "--all-managed",
                        prepare=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
        self.assertTrue(any(b"asked to upgrade" in line for line in process.stderr))
        process.send_signal(signal.SIGHUP)
        out, err = process.communicate(timeout=9)
        self.assertEqual((process.returncode, results(out.decode())), (0, ["done"]))
        self.assertNotIn(b"stop", err)

    def test_signals_at_the_request(self):
        changer.stop_at_request(self, lambda: Script(["1 1 1b2 1o 2r"] * 2, steps="1 0"),
                                ("--all-managed", "--batch", "1"),
                                lambda request: request[0] == 2)

    def test_signals_at_random_moments(self):
        def check(sent, found, err):  # what was asked is awaited; the first request is repeated
            self.assertIn("; started again, it goes on with the rest", err)
            self.assertEqual(found.count("done"), max(sent - 1, min(sent, 1)))
        changer.end_at_random(
            self, lambda: Script(["1 1 1 1b2 1b2 1o 2r"] * 5, answers="x 0", steps="1"),
            ("--all-managed", "--batch", "1"), lambda script: script.requests().count(2), check)

    def test_one_at_a_time(self):
        script = Script(["1 1 1b2"])
        first = start(script.port, "--all-managed", "--deadline", "9")
        self.assertTrue(any(b"asked to upgrade" in line for line in first.stderr))
        status, _, err = run(script.port, "--all-managed")
        path = f"/run/lock/zov-127.0.0.1-{script.port}"
        self.assertEqual((status, err), (1, f"zov-rollout: process {first.pid} is changing devices "
                         f"of the controller at 127.0.0.1:{script.port}, see {path}\n"))
        self.assertEqual(run(script.port, "--all-managed", "--plan")[0], 0)
        first.kill()
        first.communicate()
        self.assertEqual(os.stat(path).st_mode & 0o777, 0o644)
        os.unlink(path)
        os.symlink("/dev/null", path)
        self.addCleanup(os.unlink, path)
        status, _, err = run(script.port, "--all-managed")
        self.assertEqual((status, err), (1, f"zov-rollout: cannot lock {path}: it is no regular "
                                            f"file, and belongs to user {os.geteuid()}\n"))

    def test_hostile_texts(self):
        texts = ["\x1b]0;x\x07", "\x9b31m", "\r\n", "\u202eabc", "%s%n", "\u20ac" * 999,
                 "x" * 60000, "", "", "\u00ad\u2060\ufeff", "\U000e0041"]
        script = Script(["1"] * len(texts), answers="14")
        script.name = lambda n: texts[n]
        with tempfile.TemporaryDirectory() as folder:
            plan = run(script.port, "--all-managed", "--plan")[1]
            _, out, err = run(script.port, "--all-managed", "--log", f"{folder}/log")
            log = Path(f"{folder}/log").read_text()
        for text in (plan, out, err, log):
            self.assertNotRegex(text, "[\0-\x09\x0b-\x1f\x7f-\x9f\xad\u202e\u2060\ufeff\ufffd"
                                      "\U000e0041]")
            self.assertLess(max(map(len, text.splitlines())), 250)
        self.assertIn("\u20ac" * 29 + "...  ", plan)
        document = json.loads(run(script.port, "--all-managed", "--plan", "--json")[1])
        self.assertEqual([device["name"] for device in document["devices"]], texts)


class Simulated(unittest.TestCase):
    def test_batches_json_and_log(self):
        port = self.enterContext(Controller("--aps", "24", "--switches", "3")).port
        log = Path(self.enterContext(tempfile.TemporaryDirectory()), "log")
        plan = json.loads(run(port, "--all-managed", "--plan", "--json")[1])
        sizes = {}
        for device in plan["devices"]:
            sizes.setdefault(device["batch"], []).append(device["kind"])
            self.assertEqual(device["kind"], KINDS[device["mac"][:5]])
        planned = [kinds for batch, kinds in sorted(sizes.items(), key=str) if batch is not None]
        aps = sum(kinds.count("access_point") for kinds in planned)
        self.assertEqual(list(map(len, planned[:aps // 10])), [10] * (aps // 10))  # if not told
        self.assertTrue(all(len(set(kinds)) == 1 for kinds in planned))
        log.write_text("kept\n")
        status, out, err = run(port, "--all-managed", "--batch", "1,3,50%", "--json", "--log", log)
        kept, *lines = log.read_text().splitlines()
        result, again = json.loads(out), json.loads(run(port, "--all-managed", "--json")[1])
        self.assertEqual((kept, result["status"]), ("kept", status))
        for document, results_then in ((result, {"done", "skipped", "up to date"}),
                                       (again, {"skipped", "up to date"})):
            self.assertEqual({one["result"] for one in document["devices"]}, results_then)
        for line in lines:
            self.assertRegex(line, r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ zov-rollout\[\d+\]: \S")
        texts = [line.split("]: ", 1)[1] for line in lines]
        self.assertRegex(texts[0], r"^zov-rollout \S+, user \S+, process \d+: .*--batch 1,3,50%")
        self.assertIn(f"batch 2 of {result['batches']}: 3 devices", err)
        self.assertEqual([text for text in texts if "skipped: " in text and "  " not in text],
                         [f"{d['mac']} {d['name']}: skipped: {d['reason']}"
                          for d in result["devices"] if d["result"] == "skipped"])
        self.assertEqual(texts[-1], f"status {status}")
        schema = json.loads(Path(SOURCE, "companions/rollout/rollout.schema.json").read_text())
        for document in (plan, result, again):
            jsonschema.validate(document, schema)

    def test_selection(self):
        controller = self.enterContext(Controller("--aps", "10", "--upgrade", f"{AP2}=20"))
        port = controller.port
        controller.ok("upg", "--mac", AP2)
        for options, names in (
                (("--name", "*", "--state", "upgrading"), ["ap-floor1-02"]),
                (("--mac", AP2, "--name", "sw-*", "--exclude", "*floor2"),
                 ["ap-floor1-02", "sw-floor1"]),
                (("--all-managed", "--kind", "switch", "--exclude", "02:A2:00:00:00:02"),
                 ["sw-floor1"]),
                (("--name", "*", "--state", "offline"), ["ap-floor2-02"])):
            out = run(port, "--plan", *options)[1]
            self.assertEqual(sorted(row[0] for row in rows(out).values()), names)
        other = "02:A2:00:00:00:02"
        for keep, order in (((), [AP2, AP1, other]), (("--keep-order",), [AP2, other, AP1])):
            planned = json.loads(run(port, "--mac", f"{other},{AP1},{AP2}", "--batch", "1",
                                     "--plan", "--json", *keep)[1])["devices"]
            planned.sort(key=lambda device: device["batch"])  # what runs is followed first
            self.assertEqual([device["mac"] for device in planned], order)
            self.assertEqual([device["result"] for device in planned],
                             ["follow", "upgrade", "upgrade"])
        unmanaged = run(port, "--mac", "02:A3:00:00:00:04,00:00:00:00:00:09", "--plan")[1]
        self.assertEqual(results(unmanaged),
                         ["skipped: not under management", "skipped: not in the list"])
        for options, says in ((("--mac", "02:A3:00:00:00:04"), ""),
                              (("--name", "nobody"), "no device has a name that matches 'nobody'"),
                              *((("--all-managed", "--exclude", what),
                                 f"--exclude {what} excludes no device")
                                for what in ("x*", "02:00:00:00:00:09"))):
            status, _, err = run(port, *options)
            self.assertEqual((status, says in err), (1, True), err)

    def test_logs_that_take_nothing_and_a_full_disk(self):
        port = self.enterContext(
            Controller(*(f"--upgrade={mac}=0.4" for mac in (AP1, AP5)))).port
        with tempfile.TemporaryDirectory() as folder, open("/dev/full", "w") as full:
            self.assertEqual(run(port, "--mac", AP1, "--log", "/dev/full"), (
                1, "", "zov-rollout: cannot write /dev/full: No space left on device\n"))
            os.mkfifo(f"{folder}/pipe")  # one that ends in between: the batch does not
            for mac, found in ((f"{AP1},{AP3}", ["done", "not started"]), (AP5, ["done"])):
                reader = os.open(f"{folder}/pipe", os.O_RDONLY | os.O_NONBLOCK)
                process = start(port, "--mac", mac, "--batch", "1", "--log", f"{folder}/pipe")
                self.assertTrue(any(b"asked to upgrade" in line for line in process.stderr))
                os.close(reader)
                out, err = (text.decode() for text in process.communicate(timeout=30))
                self.assertEqual((process.returncode, results(out)), (1, found))
                self.assertIn("Broken pipe; nothing more is begun", err)
                self.assertNotIn("started again", err)
            self.assertRegex(run(port, "--mac", "2:0:0:0:0:1", "--log", "/dev/stderr")[2],
                             r" zov-rollout\[\d+\]: status 1\n$")
            reader, writer = os.pipe()  # one that is full: nobody waits for it in vain
            os.write(writer, bytes(fcntl.fcntl(writer, fcntl.F_SETPIPE_SZ, 4096)))
            process = start(port, "--mac", AP3, "--log", f"/dev/fd/{writer}", pass_fds=[writer])
            time.sleep(0.5)
            process.send_signal(signal.SIGTERM)
            err = process.communicate(timeout=9)[1].decode()
            self.assertEqual((process.returncode, err), (
                3, "zov-rollout: stopped by a signal; nothing was begun\n"))
            os.close(reader)
            os.close(writer)
            status, _, err = run(port, "--mac", AP3, stdout=full)
            self.assertEqual((status, err.count("cannot write standard output")), (1, 1))
            status, _, err = run(port, "--mac", AP3, "--plan", prepare=lambda: os.close(1))
            self.assertEqual((status, err.count("cannot write standard output")), (1, 1))

    def test_question_and_bar(self):
        controller = self.enterContext(Controller("--upgrade", f"{AP1}=1"))
        question = "Upgrade 2 devices in 1 batch? [y/N] "
        for answer in (b"\n", b"n\n", b"\x04", signal.SIGINT):
            shown, status, out = ask(controller.port, answer, "--mac", f"{AP1},{AP3}")
            self.assertEqual((status, out, shown.count(question)), (3, "", 1))
            self.assertRegex(shown, r"nothing was begun\r\n$")
        shown, status, out = ask(controller.port, b"yes\n", "--mac", f"{AP1},{AP3}", columns=20)
        self.assertEqual((status, results(out)), (0, ["done", "done"]), shown)
        bars = re.findall(r"\r(\d+% \d ok \d bad) *(?=\r)", shown)
        self.assertTrue(bars and max(map(len, bars)) < 20, shown)
        self.assertIn("02:A3:00:00:00:01  ap-floor1-01  2.0.1  -", shown)  # the plan
        self.assertNotRegex(shown, "\x1b")
        controller.ok("upg", "--mac", AP5)
        shown, status, _ = ask(controller.port, b"Y\n", "--mac", f"{AP2},{AP5}")
        self.assertEqual((status, "Upgrade 1 device and follow 1 in 2 batches? [y/N] " in shown),
                         (0, True), shown)
        shown, _, _ = ask(controller.port, None, "--mac", "02:A3:00:00:00:06", "--yes")
        self.assertRegex(shown, r"\rbatch 1/1 \[#*-+\] +\d+ %  all \[#*-+\] +\d+ %  "
                                r"0 done, 0 failed")
        # Nobody to ask.
        done = call(PROGRAM, "--acport", controller.port, "--mac", AP1, start_new_session=True)
        self.assertEqual(done, (
            2, "", "zov-rollout: --yes is needed where no terminal is to ask at\n"))

    def test_usage(self):
        wrong = """| --name= | --mac , | --mac x | --mac 2:0:0:0:0:1x | --all-managed x | --exclude=
            | --all-managed --exclude 2:0:0:0:0:1,2:0:0:0:0:2 | --all-managed --exclude 3:0:0:0:0:1
            | --all-managed --exclude 2:0:0:0:0:001"""
        wrong += "".join(f" | --all-managed --{option}" for option in (
            "batch=0", "batch=1,", "batch=101%", "batch=10001", "type=3", "interval=nan",
            "interval=0", "deadline=0", "settle=-1", "max-failures=-1", "period=x", "kind=ap",
            "state=up", "to="))
        for words in [("--mac", f"{AP1} {AP2}"), *map(str.split, wrong.split("|"))]:
            status, out, err = run(1, *words)
            self.assertEqual((status, out, err.count("\n")), (2, "", 1), words)
            self.assertRegex(err, "^zov-rollout: ")


main()
