# SPDX-License-Identifier: MIT
"""zov-apply by random runs against ac-sim. A model of this file's own works out what it has to
plan, to store and to take back: apply_random.py ZOV

ZOV_LONG=1: 500 runs. Run n has the seed ZOV_SEED + n.
"""
import fnmatch
import hashlib
import json
import os
import random
import re
import shlex
import struct
import tempfile
import unittest
from collections import Counter
from pathlib import Path
from types import SimpleNamespace
from typing import NamedTuple

import jsonschema
import settings
from controllers import Controller
from harness import SOURCE, call, main, tool
from settings import AP, SWITCH, TABLE

SEED = int(os.environ.get("ZOV_SEED") or random.randrange(10 ** 9))
RUNS = 500 if "ZOV_LONG" in os.environ else 20
LEAST = {"changed": 400, "elements": 100, "no file can hold": 100, "passwords": 50}  # of 500 runs
SCHEMA = jsonschema.Draft202012Validator(
    json.loads(Path(SOURCE, "companions/apply/apply.schema.json").read_text()))
FAST = ("--yes", "--settle", "0", "--interval", "0.05", "--timeout", "20")
BOTH = {"name", "location", "admin", "password", "ipv4", "dns1", "dns2", "ac_list"}  # of any kind
STATE = re.compile(r"\.pdl_status|\.pd_lifeguard\[\]\.(status|reboot_count)$")
SECRET = re.compile(r"password|wep\.key\b|passphrase|wpa_key|local_auth|hotspot20|secret")
TOLD = re.compile(r"S3cr|mesh-key-0815|call-me-maybe|radius-secret|0123456789")  # secrets have it
RISKY = re.compile(r"(ipv4|dns[12]|manage_vlan_id|manage_mac_list|ac_list|admin|password|mesh\..*"
                   r"|radio\S+\.(op_mode|mesh\.\w+)|power_budget|pd_lifeguard.*"
                   r"|switch_port\S+\.mode"
                   r"|poe_port\S+\.(enable|power_limit_type|user_power_limit))$")
PORTS = ("switch_port", "poe_port", "pd_lifeguard")
PLACE = {"comment": "unchanged"}  # an element of which nothing is named


class Lacks(Exception):
    """A device has no such element."""


class Raw(str):
    """A stored value that no file can hold, as a report shows it."""


def same(row, value):
    """What all spellings of a value have in common."""
    if row.form == "digest":
        return hashlib.md5(value.encode() + b"\n").hexdigest()
    if row.form == "macs":
        return sorted(bytes(int(part, 16) for part in mac.split(":")) for mac in value)
    if row.path.endswith("hotspot20") and value:
        return json.dumps(json.loads(value), sort_keys=True)
    return value if row.form == "hosts" else settings.encoded(row, value)


def row_of(kind, path):
    return TABLE[kind].get(path) or TABLE[kind].get(path + "[]")


def flat(kind, node, make=same, path="wtp_cfg", shown=""):
    """Settings by paths as --set takes them, with what `make` makes of each; None: an element."""
    made = {}
    for name, value in node.items():
        below, here = f"{path}.{name}", f"{shown}.{name}".lstrip(".")
        row = row_of(kind, below)
        if STATE.search(below) or name == "comment":
            continue
        if row and isinstance(value, list) and row.form not in settings.LISTS:  # wep.key
            made |= {f"{here}[{n}]": make(row, key) for n, key in enumerate(value) if key != PLACE}
        elif row:
            made[here] = make(row, value)
        elif isinstance(value, dict):
            made |= flat(kind, value, make, below, here)
        elif isinstance(value, list):
            for n, one in enumerate(value):
                at = f"{here}[port={one['port']}]" if name in PORTS else f"{here}[{n}]"
                made |= {at: None} | flat(kind, one, make, below + "[]", at) if one != PLACE else {}
    return made


def elements(cfg, array):
    if array.endswith("wep.key"):
        return [f"{array}[{n}]" for n in range(4)]
    return [path for path in cfg if cfg[path] is None and path.rpartition("[")[0] == array]


def differences(old, new):
    return sorted([(path, "changed") for path in new if path in old and new[path] != old[path]] +
                  [(path, "added") for path in new if path not in old] +
                  [(path, "removed") for path in old if old[path] is None and path not in new])


class File(NamedTuple):
    """A document, for these kinds of devices; own: it may remove elements."""
    kinds: list
    document: dict
    own: bool = False

    def lay(self, cfg, kind):
        for path, value in flat(kind, self.document).items():
            array = path.rpartition("[")[0]
            if value is None and path not in cfg and array != "pd_lifeguard" and not (
                    array.endswith(".wlan") and path == f"{array}[{len(elements(cfg, array))}]"):
                raise Lacks
            cfg[path] = value
        kept = {f"radio[{n}].wlan": [f"radio[{n}].wlan[{at}]" for at in range(len(one["wlan"]))]
                for n, one in enumerate(self.document.get("radio", [])) if "wlan" in one}
        if "pd_lifeguard" in self.document:
            kept["pd_lifeguard"] = [f"pd_lifeguard[port={one['port']}]"
                                    for one in self.document["pd_lifeguard"]]
        gone = [one for array in kept for one in elements(cfg, array) if one not in kept[array]]
        for path in [path for path in cfg if self.own and path.startswith(tuple(gone))]:
            del cfg[path]


class Option(NamedTuple):
    """A --set option. Steps: a member and a selector: None, "*", a position, (member, value)."""
    kinds: list
    row: settings.Setting
    steps: list
    value: object
    word: str

    def lay(self, cfg, _):
        paths = [""]
        for name, by in self.steps:
            above, paths = [f"{path}.{name}".lstrip(".") for path in paths], []
            for array in above:
                found = elements(cfg, array)
                if isinstance(by, int) and by >= len(found):
                    raise Lacks
                paths += ([array] if by is None else found if by == "*" else [found[by]]
                          if isinstance(by, int) else [one for one in found if by[1] == (
                              int(one[:-1].rpartition("=")[2]) if by[0] == "port" else
                              cfg.get(f"{one}.{by[0]}", b"?").decode())])
        if not paths and any(isinstance(by, tuple) for _, by in self.steps):
            raise Lacks
        cfg.update((path, same(self.row, self.value)) for path in paths)


def look(controller):
    """The devices that have a configuration, by their addresses: what an export and a report have
    of it, and all settings."""
    with tempfile.TemporaryDirectory() as folder:
        done = call(tool("zov-export"), "--acport", controller.port, "--format", "cfg", "--partial",
                    "--directory", folder)
        assert done[0] == 0, done
        exported = {path.stem.replace("-", ":"): json.loads(path.read_text())["wtp_cfg"]
                    for path in Path(folder).iterdir()}
    seen, text = {}, controller.ok("wtps", "--json", "--password")
    for one in (one for one in json.loads(f"{{{text}}}")["wtp_list"] if one["mac"] in exported):
        kind, report, document = one["wtp_type"], one["wtp_cfg"], exported[one["mac"]]
        report.pop("pdl_status", None)
        for rule in report.get("pd_lifeguard", []):
            rule.update(reboot_count=0, status="")
        cfg = flat(kind, report, lambda _, value: Raw(value)) | flat(kind, document)
        if kind == AP:
            cfg["password"] = report["password_md5"]
        seen[one["mac"]] = SimpleNamespace(
            kind=kind, name=one["name"], document=document, report=report, cfg=cfg,
            managed=one["managed"] == 1, ready=one["managed"] == 1 and one["state"] == 5)
    return seen


def in_order(seen):
    """What was seen with rules by their port: one that came back stands last."""
    for device in seen.values():
        for some in (device.report, device.document):
            some.get("pd_lifeguard", []).sort(key=lambda rule: rule["port"])
        device.cfg = {}  # which has them by position
    return seen


class Maker(settings.Documents):
    """Makes documents and options for devices of a kind."""

    def __init__(self, chance, kind):
        super().__init__(0, kind, {f"wtp_cfg.{name}[]": count for name, count in {
            "radio": 2, "radio[].wlan": chance.randint(1, 5), "radio[].wlan[].wep.key": 4,
            "lan_port": 2, "switch_port": 10, "poe_port": 10,
            "pd_lifeguard": chance.randint(0, 3)}.items()})
        self.random = chance

    def value(self, row):
        if not SECRET.search(row.path):
            return super().value(row)
        secret = f"S3cr{self.random.getrandbits(32):08x}"
        return json.dumps({"name": secret}) if row.path.endswith("hotspot20") else secret

    def whole(self):
        made = self.group()
        for few in (made.get(name, []) for name in PORTS):
            for element, port in zip(few, self.random.sample(range(1, 11), len(few))):
                element["port"] = port
        return made

    def some(self, node, keep, path="wtp_cfg"):
        """A part of a document, spelled in other ways."""
        made, chance = {}, self.random
        for name, value in node.items():
            below = f"{path}.{name}"
            row = row_of(self.kind, below)
            if row and (name != "key" or not isinstance(value, list)):
                readable = (row.form == "digest" if name == "password" else
                            name != "clear_reboot_count")
                if name == "port" or readable and chance.random() < keep:
                    made[name] = value
                    if row.form == "macs":
                        made[name] = [mac.lower() for mac in reversed(value)]
                    elif name == "hotspot20" and value:
                        made[name] = json.dumps(json.loads(value), indent=3)
                continue
            if isinstance(value, dict):
                value = self.some(value, keep, below)
            elif isinstance(value, list):
                value = [(key if chance.random() < keep else PLACE) if row else
                         self.some(key, keep, f"{below}[]") or PLACE for key in value]
                if name in PORTS:
                    value = chance.sample(value, chance.randint(0, len(value)))
            while isinstance(value, list) and value[-1:] == [PLACE]:
                value.pop()
            if value:
                made[name] = value
        return made

    def option(self, cfg, kinds, folder):
        """An option for a device that has this."""
        chance, bad = self.random, r"\.name$|\.ipv4$|clear_reboot_count|\[\]\.port$" + (
            r"|^wtp_cfg\.password" if kinds != [AP] else "")
        row = chance.choice([row for path, row in self.paths.items()
                             if not STATE.search(path) and not re.search(bad, path)])
        is_list, steps, names = row.form in settings.LISTS, [], row.path.split(".")[1:]
        ssids = [text.decode() for path, text in cfg.items() if path.endswith(".ssid") and text]
        for n, name in enumerate(names, 1):
            plain, by = name.removesuffix("[]"), None
            if plain != name and not (is_list and n == len(names)):
                named = ([("ssid", chance.choice(ssids))] if plain == "wlan" and ssids else
                         [("port", chance.randint(1, 10))] * 3 if plain in PORTS else [])
                by = chance.choice([0, 1, 0, 1, "*", "*", "*", chance.randrange(5), *named])
            steps.append((plain, by))
        value = [self.value(row)] if is_list else self.value(row)
        path = chance.choice(["", "wtp_cfg."]) + ".".join(name + (
            "" if by is None else "[{}={}]".format(*by) if isinstance(by, tuple) else f"[{by}]")
            for name, by in steps)
        text = value[0] if is_list else str(value)
        if SECRET.search(path) or chance.random() < 0.2:
            file = Path(folder, f"value {chance.getrandbits(40)}")
            file.write_text(text + chance.choice(["", "\n"]))
            text = f"@{file}"
        both = row.path.split(".")[1].removesuffix("[]") in BOTH
        return Option(kinds if both else [self.kind], row, steps, value, f"--set={path}={text}")


def spoil(controller, mac, device):
    """Stores values that no file can hold in the first elements of all arrays."""
    items = b""
    for path, row in TABLE[device.kind].items():
        wrong = {"rate": b"\0\0\x15\xb3", "text": b"", "u32": bytes(4)}.get(row.form)
        good = wrong is None or row.form != "rate" and row.low <= 0 <= (row.high or 0)
        array, key = path.split(".")[1].removesuffix("[]"), bytes(path.count("[]"))
        few = device.document.get(array, [])
        if good or "password" in path or STATE.search(path) or array in PORTS and not few:
            continue
        if array in PORTS:
            port = TABLE[device.kind][f"wtp_cfg.{array}[].port"].id
            items += struct.pack(">HHBHI", port, 1, 0, 4, few[0]["port"])
        items += struct.pack(">HH", row.id, len(key)) + key + struct.pack(">H", len(wrong)) + wrong
    body = b"\0\1" + bytes.fromhex(mac.replace(":", "")) + bytes([device.kind]) + bytes(5) + items
    request = b"\5" + struct.pack(">I", len(body) + 2) + body + b"\0\0"
    assert controller.replies(request, "00") == b"\0\0"


class Run:

    def __init__(self, chance, controller, folder):
        self.chance, self.controller, self.folder = chance, controller, Path(folder)
        for mac, device in look(controller).items():
            if device.ready and chance.random() < 0.6:
                controller.configure(mac, Maker(chance, device.kind).whole())
        for mac, device in look(controller).items():
            if device.ready and chance.random() < 0.5:
                spoil(controller, mac, device)
        if chance.random() < 0.1:
            controller.run("cac", "--mac", f"02:A3:00:00:00:0{chance.randint(1, 5)}")
        self.before, self.own, self.stdin = look(controller), {}, ""
        self.selection, self.chosen, files = self.select()
        kinds = sorted({self.before[mac].kind for mac in self.chosen})
        layers = []
        for n in range(chance.randint(not self.own, 3) if self.selection else 0):
            kind = chance.choice(kinds)
            document = self.document(kind, [0.01, 0.05, 0.3])
            for name in ("name", "ipv4", *["password"] * (kinds != [AP])):
                document.pop(name, None)
            document = document or {"location": f"floor {n}"}
            layers.append(File(kinds if BOTH.issuperset(document) else [kind], document))
            files.insert(n, self.write(f"layer {n}.json", document))
            if not self.stdin and chance.random() < 0.1:
                self.stdin, files[n] = Path(files[n]).read_text(), "-"
        macs = chance.choices(self.chosen, k=chance.choice([0, 0, 1, 2]))
        options = [Maker(chance, one.kind).option(one.cfg, kinds, folder)
                   for one in map(self.before.get, macs)]
        self.documents = [*layers, None, *options]  # None: the device's own file
        self.words = [*self.selection, *files, *(one.word for one in options),
                      "--batch", chance.choice(["1", "1,2", "50%", "500"]),
                      *["--allow-removal"] * (chance.random() < 0.97)]

    def document(self, kind, shares):
        maker = Maker(self.chance, kind)
        stored = [one.document for one in self.before.values() if one.kind == kind]
        source = maker.whole() if self.chance.random() < 0.8 else self.chance.choice(stored)
        return maker.some(source, self.chance.choice(shares))

    def write(self, name, document, comment=""):
        path = self.folder / name
        path.write_text(json.dumps({"comment": comment, "wtp_cfg": document}))
        return str(path)

    def select(self):
        """Chooses devices, and gives some files of their own."""
        chance, every, files = self.chance, sorted(self.before), []
        some, own = (sorted(chance.sample(every, chance.randint(1, len(every)))) for _ in range(2))
        glob = chance.choice(["ap-*", "*-0[12]", "sw-*", "*floor1*"])
        selection, chosen = chance.choice([
            ([], own), (["--mac", ",".join(some)], some), (["--name", glob], [
                mac for mac in every if fnmatch.fnmatchcase(self.before[mac].name, glob)]),
            (["--all-managed"], [mac for mac in every if self.before[mac].managed])])
        (self.folder / "devices" / ".git").mkdir(parents=True)
        (self.folder / "devices" / "README").write_text("{")
        for mac in own if not selection or chance.random() < 0.6 else []:
            device = self.before[mac]
            document = self.document(device.kind, [0.02, 0.2, 1]) or {"location": "here"}
            for radio, old in zip(document.get("radio", []), device.document.get("radio", [])):
                if "wlan" in radio and chance.random() < 0.6:
                    radio["wlan"] += [PLACE] * (len(old["wlan"]) - len(radio["wlan"]))
            if device.kind == SWITCH and chance.random() < 0.1:
                document["pd_lifeguard"] = []
            self.own[mac] = File([device.kind], document, True)
            kind = f"{'a switch' if device.kind == SWITCH else 'an access point'}: zov cfg --type "
            place = chance.choice(["", "devices/", "devices/"])
            file = self.write(f"{place}{mac.replace(':', '-')}.json", document,
                              f"{mac}, {kind}{AP - device.kind}")
            files += [] if place else [file]
        if len(files) < len(self.own):
            files.append(str(self.folder / "devices"))
        return selection, chosen, files

    def wanted(self, now):
        """Of each device: what it is to have, None: it cannot. And whether all devices lack
        something of a document. Where there is nothing for a device it counts if --mac names it."""
        made, tried, failed = {}, Counter(), Counter()
        for mac in self.chosen:
            kind, cfg = now[mac].kind, dict(now[mac].cfg)
            mine = [(n, one or self.own.get(mac)) for n, one in enumerate(self.documents)]
            mine = [(n, one) for n, one in mine if one and kind in one.kinds]
            if mine or "--mac" in self.selection:
                made[mac] = cfg if mine else None
            for n, one in mine:
                tried[n] += 1
                try:
                    one.lay(cfg, kind)
                except Lacks:
                    failed[n] += 1
                    made[mac] = None
        return made, not made or any(self.documents[n] and tried[n] == failed[n] for n in tried)

    def apply(self, *words):
        done = call(tool("zov-apply"), "--acport", self.controller.port, *words, data=self.stdin)
        assert not TOLD.search(done[1] + done[2]), (words, done)
        return done


class Runs(unittest.TestCase):
    maxDiff = 3000

    def plan(self, run, now):
        """Compares a plan with the model's, and returns that: what is wanted, and what differs."""
        wanted, none_can = run.wanted(now)
        status, out, err = run.apply("--plan", "--json", *run.words)
        if none_can:
            self.assertEqual((status, out), (1, ""))
            self.assertRegex(err, "no device can have|nothing is given")
            return wanted, {}
        different = {mac: differences(now[mac].cfg, cfg or now[mac].cfg)
                     for mac, cfg in wanted.items()}
        expected = 3 if any(different.values()) else int(None in wanted.values())
        self.assertEqual((status, err), (expected, ""))
        plan = json.loads(out)
        SCHEMA.validate(plan)
        listed = {one["mac"]: one["differences"] for one in plan["devices"]}
        self.assertEqual(different, {mac: sorted((each["path"], each["change"]) for each in found)
                                     for mac, found in listed.items()})
        for each in sum(listed.values(), []):
            hidden = "(secret)" in (each["from"], each["to"])
            self.assertEqual(hidden, bool(SECRET.search(each["path"])), each)
            if each["change"] == "changed":
                self.assertEqual(bool(each["risk"]), bool(RISKY.match(each["path"])), each)
        return wanted, different

    def one(self, run, counts):
        before, save, log = run.before, run.folder / "it's $saved.json", run.folder / "log"
        wanted, different = self.plan(run, before)
        begun = {mac for mac, found in different.items() if found and before[mac].ready}
        skipped = {mac for mac, found in different.items() if found} - begun
        expected = int(not different or None in wanted.values() or bool(skipped))
        changes = [change for mac in begun for change in different[mac]]
        if "--allow-removal" not in run.words and any(how == "removed" for _, how in changes):
            expected, begun = 2, set()
        status, out, err = run.apply(*FAST, *run.words, "--json", "--save", str(save),
                                     "--log", str(log))
        self.assertEqual((status, save.exists()), (expected, bool(begun)), err)
        after = look(run.controller)
        for mac, device in after.items():
            old, goal = before[mac].cfg, wanted[mac] if mac in begun else before[mac].cfg
            new = tuple(path for path, how in differences(old, goal) if goal.get(path, "") is None)
            self.assertEqual(goal, {path: value for path, value in device.cfg.items()
                                    if path in goal or not path.startswith(new)})
        if not begun:
            return
        sent = {(mac, re.match(r"\w+", path)[0]) for mac in begun for path, _ in different[mac]}
        raw = {(mac, re.match(r"\w+", path)[0]) for mac in begun
               for path, value in before[mac].cfg.items() if isinstance(value, Raw)}
        counts.update({"changed": 1, "elements": any(how != "changed" for _, how in changes),
                       "passwords": ("password", "changed") in changes,
                       "no file can hold": bool(sent & raw)})
        result = json.loads(out)
        SCHEMA.validate(result)
        done = {one["mac"] for one in result["devices"] if one["result"] == "done"}
        self.assertEqual(done, begun)
        self.assertNotRegex(log.read_text(), TOLD)
        _, rest = self.plan(run, after)
        if not re.search(r"\[ssid=|pd_lifeguard\[\d", str(run.words)):  # else it can choose others
            self.assertFalse([mac for mac in begun if rest[mac]])
        words = shlex.split(err.splitlines()[-1].partition(" to undo it: ")[2])
        self.assertEqual(words[:3], ["zov-apply", "--undo", str(save)])
        status, _, err = run.apply(*words[1:], *FAST, "--no-save")
        self.assertEqual(status, 0, err)
        self.assertEqual(in_order(look(run.controller)), in_order(before))

    def test_runs(self):
        counts = Counter()
        print(f"ZOV_SEED={SEED}", flush=True)
        for seed in range(SEED, SEED + RUNS):
            chance = random.Random(seed)
            fleet = "--aps", str(chance.randint(1, 5)), "--switches", str(chance.randint(1, 3))
            with self.subTest(seed=seed), tempfile.TemporaryDirectory() as folder, \
                    Controller(*fleet) as controller:
                self.one(Run(chance, controller, folder), counts)
        print(dict(counts))
        for what, least in LEAST.items():
            self.assertGreaterEqual(counts[what], least if RUNS == 500 else 0, what)


main()
