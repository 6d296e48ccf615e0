# SPDX-License-Identifier: MIT
"""zov-apply against ac-sim and a controller that plays a script: apply.py ZOV

ZOV_LONG=1: 200 signals at random moments, with the seed ZOV_SEED.
"""
import json
import os
import re
import struct
import tempfile
import time
import unittest
from pathlib import Path

import changer
import fields
import jsonschema
from changer import ask, results, run
from controllers import AP, SWITCH, Controller
from harness import SOURCE, main

SCHEMA = json.loads(Path(SOURCE, "companions/apply/apply.schema.json").read_text())
PATH = "radio[0].tx_power"
OWN = f"{AP.replace(':', '-')}.json"  # a file of that device
SET = ("--set", f"{PATH}=17", "--name", "*", "--no-save")


class Script(changer.Script):
    """A look says what is stored - 0 what was, 1 what is wanted, 2 another value, 3 what is wanted
    and another setting, 4 a radio less, 5 one more - behind marks: o offline, u unmanaged,
    b upgrading, c state changed, n without configuration, d listed twice, g gone where that is
    listed, which takes a look. `answers` are those to requests, CODE:TEXT, x is none. Requests to
    change are kept."""

    def __init__(self, looks, answers="0"):
        self.times = []
        self.stored = fields.Maker(1, counts=(2,), words=[b"w"]).record(3, cfg=True)
        super().__init__(looks, answers)

    def answer(self, request):
        if request[0] == 1:
            is_whole = request[4] & 8
            return fields.reply([self.record(n, look, is_whole)
                                 for n, look in self.shown(request, is_whole).items()
                                 if not is_whole or "g" not in look
                                 for _ in range(1 + ("d" in look))])
        count = struct.unpack_from(">H", request, 5)[0]
        self.times.append((time.monotonic(), request))
        answer = self.take(self.answers)
        code, _, text = answer.partition(":")
        return b"" if answer == "x" else (bytes([int(code), len(text)]) + text.encode()) * count

    def changed(self):
        return {request[at:at + 6] for _, request in self.times
                for at in range(7, 7 + 6 * struct.unpack_from(">H", request, 5)[0], 6)}

    def record(self, n, look, is_whole):
        marks, what = re.fullmatch("([oubcndg]*)([0-5])", look).groups()
        radios = [dict(radio) for radio in self.stored["wtp_cfg"][0]["radio"]]
        radios = radios[:1] if what == "4" else radios + radios[1:] * (what == "5")
        radios[0]["tx_power"] = {"0": 20, "2": 99}.get(what, 17)
        radios[0]["distance"] = 5 if what == "3" else 4
        cfg = self.stored["wtp_cfg"][0] | {"radio": radios}
        return self.stored | {
            "mac": fields.Mac(self.mac(n)), "name": fields.Text(b"dev-%d" % n),
            "upg_img": "b" in marks, "managed": "u" not in marks, "sub_state": 0,
            "state": 0 if "o" in marks else 5,
            "change_time": marks.count("c"),
            "wtp_cfg": [cfg] if is_whole and "n" not in marks else []}


CASES = r"""
as usual | 0 0 1 | done | exit=0
it settles | 0 0 1 o1 1 c1 1 | done | --settle 0.2 exit=0
stored late | 0 0 0 0 1 | done | exit=0
never stored | 0 0 0 | failed: PATH is not as wanted: PATH 20 -> 17 | --begin 0.2
another value | 0 0 2 | failed: PATH is not as wanted: PATH 99 -> 17 | --begin 0.2
more than was asked | 0 0 3 | failed: changed more than was asked: radio[0].distance was 4, is 5
    | --begin 0.2
a radio is gone | 0 0 4 | failed: changed more than was asked: radio[1] is gone | --begin 0.2
not kept | 0 0 1 2 | failed: PATH is not as wanted: PATH 99 -> 17 | --begin 0.2 --settle 5
changed meanwhile | 0 2 | skipped: changed meanwhile | sent=0
done by others | 0 1 | skipped: changed meanwhile | sent=0
listed twice | d0 d0 d1 | done | exit=0
without a configuration | n0 | failed: has no configuration | sent=0
gone as configurations are read | g0 | failed: not in the list | sent=0
a radio is new | 0 0 5 | failed: changed more than was asked: radio[2] is new | --begin 0.2
without a configuration for a while | 0 0 n1 1 | done | exit=0
another member of the same | 0 4 | skipped: changed meanwhile | sent=0
refused | 0 0 0 | failed: Incorrect configuration for device {}: no | answers=19:no
refused, but stored | 0 0 1
    | failed: Incorrect configuration for device {}, but stored: a plan will not show it
    | answers=19
busy, not ready, yes | 0 0 0 0 1 | done | exit=0 sent=3 answers=10,17,0
busy, but stored | 0 0 1 | failed: Device {} is busy, but stored: a plan will not show it
    | answers=10
busy, and changed by others | 0 0 2
    | failed: Device {} is busy; PATH is not as wanted: PATH 99 -> 17 | answers=10
unmanaged at the end | 0 0 1 u1 | timed out: not under management any more
    | --settle 5 --deadline 1
busy too long | 0 | failed: Device {} is busy | --begin 0.2 sent=* answers=10
no response | 0 | failed: No response from device {} | --begin 0.2 answers=12
no response, but stored | 0 0 0 1
    | failed: No response from device {}, but stored: a plan will not show it | answers=12
a lost reply | 0 0 1 | done | exit=0 sent=2 answers=x,0 | trying again
a lost request | 0 0 0 1 | done | exit=0 sent=2 answers=x,0 | trying again
lost twice | 0 0 1 | unknown: no answer, but stored | sent=2 answers=x
lost twice, not stored | 0 | unknown: no answer, not stored | sent=2 answers=x
lost, then refused | 0 0 1
    | failed: Incorrect configuration for device {}, but stored: a plan will not show it
    | sent=2 answers=x,19
lost, and changed by others | 0 0 2 | unknown: no answer; PATH is not as wanted: PATH 99 -> 17
    | answers=x
away, and back | 0 0 o1 o1 1 | done | exit=0
away for good | 0 0 o1 | timed out: offline | --deadline 1
not listed any more | 0 0 - | timed out: not in the list any more | --deadline 1
not managed any more | 0 u0 | failed: not under management any more | --begin 0.2 sent=0
not ready | o0 // u0 // b0 | skipped: offline // skipped: not under management // skipped: upgrading
    | sent=0
nothing differs | 1 | - | exit=0 sent=0 | 1 as wanted
too many failures | 0 0 0 // 0 | failed: Device {} denied this operation // not started
    | --batch 1 exit=3 answers=14 | stopped: too many failures
failures that may be | 0 0 0 // 0 0 0 1 | failed: Device {} denied this operation // done
    | --batch 1 --max-failures 1 sent=2 answers=14,0
one batch, one request | 0 0 1 // 0 0 1 // 0 0 1 | done // done // done | --batch 3 exit=0
the controller is gone | 0 0 0 X // 0 | unknown: the controller did not answer // not started
    | --batch 1 --outage 0.3 exit=3
gone for a while | 0 0 0 X X 1 | done | exit=0 | answers again
"""

# A --set for all devices that is refused, and what is said of it.
SETS = """
name=x                                        would give a name to
ipv4=10.0.0.9/255.0.0.0/10.0.0.1              an address to
radio[0].wlan[0].wpa.passphrase=hunter22      a secret
radio[0].wlan[wpa.passphrase=x].vlan=1        cannot be chosen by wpa.passphrase, a secret
pdl_status[0].state=1                         change that by themselves
poe_port[port=1].port=2                       told apart by it
radio[x].tx_power=1                           none of
radio[=x].tx_power=1                          none of
radio[0.mesh.wpa_key=hunter22                 mesh.wpa_key: no = outside brackets
radio[0].wlan[wpa.passphrase=hunter22].vlan   wpa.passphrase: no = outside brackets
location.=x                                   '.' cannot be read
radio[0]x=1                                   'x' cannot be read
radio[x=1].tx_power=2                         no 'x' to be chosen by
radio[0].tx_pwer=1                            did you mean 'tx_power'
radio[9                                       expected PATH=VALUE
=x                                            no PATH=VALUE
dns1=1.2.3.4/24                               is sent as 1.2.3.4
dns1[0]=1                                     has to be a text
acl_list=x,y                                  did you mean 'ac_list'
location=@/nowhere                            cannot read /nowhere
location=@-                                   standard input is empty
location=\udcff                               the value is no UTF-8"""


class Scripted(unittest.TestCase):
    maxDiff = None

    def test_cases(self):
        def play(case):
            script = Script(case.looks, **case.script)
            status, out, err = run(script.port, *SET, *case.options)
            return results(out), status, len(script.times), err
        changer.play(self, CASES.replace("PATH", PATH), play)

    def test_the_request_is_the_whole_member(self):
        script = Script(["0 0 1"] * 2)
        run(script.port, *SET, "--batch", "2")
        [(_, request)] = script.times
        self.assertEqual(request[5:25],
                         bytes.fromhex("0002 020000000001 020000000002 03 00000000 01"))
        lists = request[25:]
        first, second = lists[:len(lists) // 2], lists[len(lists) // 2:]
        self.assertEqual((first, first[-2:]), (second, b"\0\0"))
        self.assertEqual(first[:11], bytes.fromhex("0004 0001 00 0004 00000002"))  # two radios
        # What is wanted; what is carried along; two WLANs.
        for item in ("000d 0001 00 0004 00000011", "003e 0001 00 0004 00000004",
                     "0011 0002 0000 0004 00000002"):
            self.assertIn(bytes.fromhex(item), first)

    def test_a_log_that_ends_before_the_request(self):
        script, lists = Script(["0 0 1"]), []
        folder = self.enterContext(tempfile.TemporaryDirectory())
        os.mkfifo(f"{folder}/log")
        reader, answer = os.open(f"{folder}/log", os.O_RDONLY | os.O_NONBLOCK), script.answer

        def closing(request):
            lists.append(request[0] == 1 and request[4] & 8)
            if lists.count(8) == 2 and lists[-1]:
                os.close(reader)
            return answer(request)
        script.answer = closing
        status, out, err = run(script.port, *SET, "--log", f"{folder}/log", "--json")
        document = json.loads(out)
        jsonschema.validate(document, SCHEMA)
        [device] = document["devices"]
        self.assertEqual((status, device["result"], script.times), (1, "not started", []), err)
        self.assertEqual((document["undo"], device["seconds"]), (None, None))

    def test_signals_at_the_request(self):
        changer.stop_at_request(self, lambda: Script(["0 0 1"] * 2), (*SET, "--batch", "1"),
                                lambda request: request[0] == 5)

    def test_signals_at_random_moments(self):
        def check(sent, found, _):
            self.assertEqual(sorted(found), ["done"] * len(sent) +
                             ["not started"] * (6 - len(sent)))
        changer.end_at_random(self, lambda: Script(["0 0 0 1"] * 6, answers="x 0 0 x 0"),
                              (*SET, "--batch", "1,2"), Script.changed, check)


class Simulated(unittest.TestCase):
    def setUp(self):
        self.folder = self.enterContext(tempfile.TemporaryDirectory())
        os.environ["XDG_STATE_HOME"] = self.folder
        self.controller = self.enterContext(Controller())
        self.port = self.controller.port

    def file(self, name, cfg):
        path = Path(self.folder, name)
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(cfg if isinstance(cfg, str) else json.dumps({"wtp_cfg": cfg}))
        return str(path)

    def plan(self, *options):
        status, out, err = run(self.port, "--plan", "--json", *options)
        self.assertEqual(err, "", options)
        document = json.loads(out)
        jsonschema.validate(document, SCHEMA)
        self.assertEqual(document["status"], status)
        return document

    def test_notes_and_what_a_device_cannot_have(self):
        base = self.file("base.json", {"location": "base", "timezone": 90})
        own = self.file(f"d/{OWN}", {"location": "own"})
        self.file("d/README", "none")
        over = self.plan("--mac", AP, base, own, "--set", "timezone=120")
        self.assertEqual([(one["path"], one["to"]) for one in over["devices"][0]["differences"]],
                         [("location", '"own"'), ("timezone", "120")])
        self.assertEqual([re.sub(r" \(.*", "", note).replace(base, "B") for note in over["notes"]],
                         ["B: settings are overridden by --set timezone",
                          "B: settings are overridden by files of devices"])
        wlans = self.controller.record(AP)["wtp_cfg"]["radio"][0]["wlan"]
        wlan_beyond = {"radio": [{"wlan": [{"comment": 1}] * (len(wlans) + 1) + [{"vlan": 1}]}]}
        # What a device cannot have is said of that device. zov sends what zov-check refuses.
        self.controller.configure(SWITCH, {"poe_port": [{"port": 1}, {"port": 1}, {"port": 3}]})
        for mac, cfg, reason in (
                (AP, {"radio": [{"tx_power": 1}] * 9}, "has no radio[8]"),
                (AP, wlan_beyond, f"has no radio[0].wlan[{len(wlans)}]"),
                (AP, {"poe_port": [{"port": 1}]}, f"FOLDER/{OWN} is for another kind of device"),
                ("02:A1:00:00:00:01", {"name": "x"}, "is neither an access point nor a switch"),
                (SWITCH, {"poe_port": [{"port": 99}]}, "has no poe_port[port=99]"),
                (SWITCH, {"dns1": "1.2.3.4"}, "poe_port has port 1 twice")):
            with self.subTest(cfg=cfg):
                own = self.file(f"{mac.replace(':', '-')}.json", cfg)
                [device] = self.plan(own)["devices"]
                self.assertEqual(device["reason"], reason.replace("FOLDER", self.folder))

    def test_sets(self):
        for words, expected in (
                (("ac_list=b.example,a.example", "name=x"),
                 [("name", "x"), ("ac_list", ["b.example", "a.example"])]),
                (("ac_list=",), [("ac_list", [])]),
                (("location=\U000e0041",), [("location", "\U000e0041")]),
                ((f"location=@{self.file('empty', '')}",), [("location", "")]),
                (("ipv4=0.0.0.0/0.0.0.0/0.0.0.0",), [])):
            sets = [part for word in words for part in ("--set", word)]
            [device] = self.plan("--mac", AP, *sets)["devices"]
            self.assertEqual([(one["path"], json.loads(one["to"]))
                              for one in device["differences"]], expected)
            self.assertTrue(str(device["differences"]).isascii())  # what is not seen is escaped
        for keep, batches in (((), [2, 1]), (("--keep-order",), [1, 2])):
            plan = self.plan("--mac", f"{SWITCH},{AP}", "--set", "location=x", *keep)
            self.assertEqual([one["batch"] for one in plan["devices"]], batches)

    def test_plan_as_text(self):
        wlans = self.controller.record(AP)["wtp_cfg"]["radio"][0]["wlan"]
        new = {"ssid": "new", "vlan": 7, "enable": 1, "sta_sep": 1, "isolation": 1, "supr_ssid": 1,
               "downloadlimit": 4, "uploadlimit": 4, "roaming": {"enable": 1}}
        add = self.file("add.json", {"radio": [{"wlan": [{"comment": 1}] * len(wlans) + [new]}]})
        gone = self.file("d/02-00-00-00-00-99.json", {"location": "gone"})
        self.file(f"d/{OWN}", {"timezone": 120})
        for words, status, text in (
                (("--mac", f"{AP},2:0:0:0:0:77", add), 3, f"""\
02:00:00:00:00:77 -: not in the list
1 device: ap-floor1-01
  + radio[0].wlan[{len(wlans)}] (ssid "new") with 9 settings
1 device to change, 0 as wanted, 1 that cannot be compared or changed so
"""),
                (("--mac", SWITCH, "--set", "dns1=1.2.3.4", "--set", "poe_port[port=1].enable=0"),
                 3, """\
1 device: sw-floor1
  ~ dns1 "0.0.0.0" -> "1.2.3.4"  ! may cut the device off
  ~ poe_port[port=1].enable 1 -> 0  ! may cut off what is connected to port 1, ap-floor1-01
1 device to change, 0 as wanted
2 changes may cut something off
"""),
                ((f"{self.folder}/d", "--all-managed", "--exclude", SWITCH), 3, f"""\
note: {gone} can be deleted: 02:00:00:00:00:99 is not in the list
1 device: ap-floor1-01
  ~ timezone 60 -> 120
1 device to change, 0 as wanted
""")):
            with self.subTest(words):
                self.assertEqual(run(self.port, "--plan", *words), (status, text, ""))
        with Controller("--aps", "20", "--switches", "0", "--others", "0") as controller:
            status, out, _ = run(controller.port, "--plan", "--set", "timezone=1", "--name", "*")
        lines = out.splitlines()
        self.assertEqual(lines[0].count(", "), 7)
        self.assertRegex(lines[0], r"^20 devices: ap-floor1-01, .* and 12 more$")
        self.assertEqual(lines[1:3], ["  ~ timezone 60 -> 1", "20 devices to change, 0 as wanted"])
        self.assertRegex(lines[3], r"^\d+ devices? of these cannot be changed now$")

    def test_where_it_is_saved(self):
        state = os.environ.pop("XDG_STATE_HOME")
        self.addCleanup(os.environ.__setitem__, "HOME", os.environ["HOME"])
        words = ("--mac", AP, *SET[:2])
        os.environ["HOME"] = f"{state}/home"
        self.assertEqual(run(self.port, *words)[0], 0)
        saved = Path(state, "home/.local/state/zov")
        self.assertEqual({path.stat().st_mode & 0o777 for path in (saved, saved.parent)}, {0o700})
        self.assertRegex([path.name for path in saved.iterdir()][0],
                         rf"^undo-127.0.0.1-{self.port}-\d{{8}}T\d{{6}}.\d{{3}}Z.json$")
        os.environ["HOME"] = self.file("file", "")
        words = ("--mac", AP, "--set", "location=x")
        self.assertIn(f"make {state}/file/.local: Not a directory", run(self.port, *words)[2])
        os.environ["XDG_STATE_HOME"] = "relative"
        for home in ("relative", None):
            os.environ["HOME"] = home or ""
            if home is None:
                del os.environ["HOME"]
            status, out, err = run(self.port, *words)
            self.assertEqual((status, out, "--save or --no-save is needed" in err), (2, "", True))
        # Devices that were not begun are not kept in it.
        script = Script(["0 0 0", "0"], answers="14")
        status, out, err = run(script.port, *SET[:4], "--batch", "1", "--save", f"{state}/u")
        self.assertEqual((status, results(out)[1]), (3, "not started"), err)
        kept = json.loads(Path(state, "u").read_text())["devices"]
        self.assertEqual([one["mac"] for one in kept], ["02:00:00:00:00:01"])

    def test_what_is_refused(self):
        both = self.file("both.json", {"radio": [{"tx_power": 1}], "poe_port": [{"port": 1}]})
        secret, all_managed = self.file("secret", "hunter22\n"), ("--all-managed",)
        sets = (row.partition("  ") for row in SETS.splitlines()[1:])
        for words, status, says in (
                *((("--set", word, *all_managed), 2, says.strip()) for word, _, says in sets),
                ((), 2, "there is nothing to apply"),
                (("--set", "location=x"), 2, "at least one of --mac"),
                ((self.file("x.json", {"location": "x"}),), 2, "is not named by an address"),
                ((self.file("f/x.json", {}).rsplit("/", 1)[0], *all_managed), 2, "not named by an"),
                ((self.file("n.json", '{"wtp_cfg":1}'), *all_managed), 2, "has to be an object"),
                *(((self.file(f"{name}.json", {"name": "x"}),), 2, "not named by an")
                  for name in ("02-A3-00-00-00-0g", "02-A3-00-00-00-0:")),
                (("-", "-", *all_managed), 2, "be read once only"),
                (("--undo=",), 2, "--undo: bad argument ''"),
                (("--save=", "--name", "*"), 2, "--save: bad argument ''"),
                ((both, *all_managed), 2, r"\('radio'\) and of switches \('poe_port'\)"),
                ((self.file("e.json", '{"wtp_cfg":{\n"nmae":1}}'), *all_managed), 2,
                 "e.json:2: ERROR: Unknown member 'nmae'"),
                (("--set", f"password=@{secret}", "--mac", SWITCH), 2, "send it by zov cfg"),
                ((self.file(f"{SWITCH.replace(':', '-')}.json", {"name": "x", "password": "y"}),),
                 2, "send it by zov cfg"),
                (("--set", "radio[7].tx_power=1", *all_managed), 1, r"has no radio\[7\]"),
                (("--set", "radio[0].tx_power=1", "--mac", SWITCH), 1, "none of the chosen"),
                (("--set", "location=@-", "-", *all_managed), 2, "be read once only"),
                (("--set", f"{'a' * 256}=1", *all_managed), 2, "has a path of 256 bytes"),
                *(((self.file(f"{name}.json", {}),), 2, "a file of a device is named as")
                  for name in ("02-A3-00-00-00-01x", "02:A3:00:00:00:01", "02-A3-00-00-00-01.x")),
                ((self.file(OWN, {}), self.file(f"g/{OWN}", {})), 2, "has another file: .*01.json"),
                ((self.file("h/x", "").rsplit("/", 1)[0],), 2, "there is no file of a device"),
                ((self.file("i/x.json/y", "").rsplit("/", 2)[0],), 2, "it is no regular file"),
                (("--set", "ac_list=x,y", "--save", "u", *all_managed), 2,
                 "--save and --no-save exclude"),
                (("--set", "location=x", "--kind", "other", "--name", "*"), 1,
                 "nothing is given for any of the chosen devices"),
                (("--set", "location=x", "--kind", "other", "--mac", AP), 1, "no device is chosen"),
                (("--undo", secret), 2, "no undo file"), (("--undo", "/nowhere"), 2, "cannot open"),
                (("--undo", secret, "--set", "location=x"), 2, "takes no files")):
            with self.subTest(words):
                got, out, err = run(self.port, *words, "--no-save")
                self.assertEqual((got, out), (status, ""), err)
                self.assertRegex(err, re.compile(says, re.S))
                self.assertNotIn("hunter22", err)

    def test_undo_files_that_are_refused(self):
        saved = Path(self.folder, "saved.json")
        self.assertEqual(run(self.port, "--mac", AP, *SET[:2], "--save", saved)[0], 0)
        good = json.loads(saved.read_text())
        [device] = good["devices"]
        wrong = [[], [{}], [device] * 2, *([device | {member: value}] for member, value in (
            ("kind", "bridge"), ("mac", "2:0"), ("items", "0g"), ("items", "000"),
            ("items", device["items"][:-2]), ("items", "ffff00000000")))]
        for change, mode, says in (
                ({"document": "plan"}, 0o600, "is no undo file"),
                *(({"devices": few}, 0o600, "is no undo file") for few in wrong),
                ({}, 0o622, "no regular file that you alone can write to")):
            with self.subTest(change=change, mode=mode):
                saved.write_text(json.dumps(good | change))
                saved.chmod(mode)
                status, out, err = run(self.port, "--undo", saved, "--no-save")
                self.assertEqual((status, out, says in err), (2, "", True), err)
        status, _, err = run(self.port, "--undo", self.folder, "--no-save")
        self.assertEqual((status, "no regular file" in err), (2, True))
        saved.chmod(0o600)
        saved.write_text(json.dumps(good | {"controller": "10.0.0.1:1"}))
        note = f"{saved} was saved from the controller at 10.0.0.1:1"
        self.assertEqual(self.plan("--undo", saved)["notes"], [note])
        status, _, err = run(self.port, "--undo", saved, "--no-save")
        self.assertEqual((status, err.splitlines()[0]), (0, f"zov-apply: note: {note}"))

    def test_removal_and_a_place_to_save(self):
        made = self.controller.record(AP)["wtp_cfg"]
        own = self.file(OWN, {"radio": [{"wlan": [{"vlan": 99}]}]})
        status, out, err = run(self.port, own)
        self.assertEqual((status, out, "--allow-removal is needed" in err), (2, "", True))
        status, out, err = run(self.port, own, "--allow-removal")
        [saved] = Path(self.folder, "zov").iterdir()
        self.assertEqual((status, saved.stat().st_mode & 0o777), (0, 0o600))
        self.assertEqual(err.splitlines()[-1], f"zov-apply: to undo it: zov-apply --undo {saved} "
                         f"--acserver 127.0.0.1 --acport {self.port}")
        self.assertEqual(run(self.port, "--undo", saved, "--no-save")[0], 0)
        # Nothing is begun without a place to save.
        Path(self.folder, "zov").chmod(0o755)
        for place, says in ((), "with mode 0700"), (
                ("--save", saved), f"cannot make {saved}: File exists\n"):
            status, out, err = run(self.port, "--mac", AP, *SET[:2], *place)
            self.assertEqual((status, out, says in err), (1, "", True), err)
        self.assertEqual(self.controller.record(AP)["wtp_cfg"], made)

    def test_undo_keeps_what_devices_count_themselves(self):
        saved, counts = f"{self.folder}/saved.json", {1: 3, 2: 4}
        self.controller.configure(SWITCH, {"pd_lifeguard": [{"port": port} for port in counts]})
        run(self.port, "--mac", SWITCH, "--set", "pd_lifeguard[*].ping_interval=9", "--save", saved)
        self.controller.configure(SWITCH, {"pd_lifeguard": [
            {"port": port, "reboot_count": count} for port, count in counts.items()]})
        self.assertEqual(run(self.port, "--undo", saved, "--no-save")[0], 0)
        rules = self.controller.record(SWITCH)["wtp_cfg"]["pd_lifeguard"]
        self.assertEqual({rule["port"]: rule["reboot_count"] for rule in rules}, counts)

    def test_question(self):
        undo = Path(self.folder, "undo")
        words = ("--mac", f"{AP},{SWITCH}", "--set", "location=x", "--save", undo)
        question = "Change 1 setting on 2 devices in 2 batches? [y/N] "
        shown, status, out = ask(self.port, b"n\n", *words)
        self.assertEqual((status, out, shown.count(question)), (3, "", 1), shown)
        self.assertRegex(shown, r"nothing was begun\r\n$")
        self.assertEqual(self.controller.record(AP)["wtp_cfg"]["location"], "Floor 1")
        shown, status, out = ask(self.port, b"y\n", *words)
        self.assertEqual((status, results(out)), (0, ["done"] * 2), shown)
        self.assertEqual(shown.count(question), 1)
        self.assertIn('~ location "Floor 1" -> "x"', shown)
        self.assertEqual(len(json.loads(undo.read_text())["devices"]), 2)


main()
