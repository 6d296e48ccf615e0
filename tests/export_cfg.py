# SPDX-License-Identifier: MIT
"""Configuration files of zov-export: they restore a fleet, and lack only what cannot be sent."""
import hashlib
import itertools
import json
import os
import re
import signal
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

import fields
import settings
from controllers import AP, SWITCH, Controller, Player
from export import HOSTILE, HOSTS, devices, make_records, ok, pipe, run
from harness import SOURCE, main, program, start, tool

# What records do not have, and what devices change by themselves.
NOT_IN_RECORDS = {"wtp_cfg.password", "wtp_cfg.pd_lifeguard[].clear_reboot_count"}
STATES = {"wtp_cfg.pd_lifeguard[].reboot_count", "wtp_cfg.pd_lifeguard[].status",
          *(path for path in settings.TABLE[settings.SWITCH] if "pdl_status" in path)}
NOT_EXPORTED = NOT_IN_RECORDS | STATES
DYNAMIC = "0.0.0.0/0.0.0.0/0.0.0.0"
ADDRESS = "wtp_cfg.ipv4"  # records hold its parts


def file_of(mac, folder=""):
    return Path(folder, mac.replace(":", "-") + ".json")


def contents(folder):
    return {path.name: path.read_bytes() for path in Path(folder).iterdir()}


def send(port, chosen, folder):
    for kind in set(chosen.values()):
        macs = [mac for mac in chosen if chosen[mac] == kind]
        pipe(b"", program(), "cfg", "--acport", port, "--type", str(settings.AP - kind), "--mac",
             ",".join(macs), "--file", ",".join(str(file_of(mac, folder)) for mac in macs), out=b"")


def stored(controller):
    """Configurations as the controller has them, and the passwords' digests."""
    report = json.loads("{" + controller.ok("wtps", "--json", "--password") + "}")["wtp_list"]
    made = {one["mac"]: one["wtp_cfg"] for one in report if "wtp_cfg" in one}
    for cfg in made.values():
        cfg.pop("pdl_status", None)
        for rule in cfg.get("pd_lifeguard", []):
            rule.update(reboot_count=0, status="")
    return made, {mac: cfg.pop("password_md5", None) for mac, cfg in made.items()}


def documents(kind, example):
    """Documents with every setting, also at its bounds, and with every sort of security."""
    shapes = {"wtp_cfg.radio[]": 2, "wtp_cfg.radio[].wlan[]": 5, "wtp_cfg.lan_port[]": 2,
              "wtp_cfg.radio[].wlan[].wep.key[]": 4, "wtp_cfg.pdl_status[]": 2}
    yield json.loads(Path(SOURCE, f"examples/{example}.json").read_text())
    for seed in range(4):
        made = settings.Documents(seed, kind, shapes).group()
        for radio in made.get("radio", []):
            for mode, wlan in zip((0, 1, 3, 6, 13), radio["wlan"]):
                wlan["sec_mode"] = mode
        for name in ("switch_port", "poe_port", "pd_lifeguard"):
            for n, element in enumerate(made.get(name, [])):
                element["port"] = n + 1
        yield {"wtp_cfg": made}
    repeats = 2 if kind == settings.SWITCH else 1
    for which in (0, 1):
        yield settings.document(*(
            (path, "{}" if path.endswith("hotspot20") else
             [ends[which]] * repeats if path == "wtp_cfg.ac_list[]" else
             min(ends[which], 65535) if row.form == "u16" else ends[which])
            for path, row in settings.TABLE[kind].items() for ends in [settings.extremes(row)]))


class Backup(unittest.TestCase):
    def test_five_hundred_access_points_and_sixty_switches(self):
        with Controller("--aps", "500", "--switches", "60") as controller, \
                tempfile.TemporaryDirectory() as folder, tempfile.TemporaryDirectory() as other:
            fleet = devices(controller.port, "--exclude", "02:A1:00:00:00:01")
            online = {one["mac"]: one["wtp_type"] for one in fleet if one["state"] == 5}
            backup, sent = ("--format", "cfg", "--all-managed", "--directory"), {}
            for one in fleet:
                if not one["managed"]:
                    controller.ok("cfg", "--mac", one["mac"], "--add", "--ip", DYNAMIC)
            for kind, example in ((settings.AP, "office-ap"), (settings.SWITCH, "poe-switch")):
                sent |= zip((mac for mac in online if online[mac] == kind),
                            itertools.cycle(documents(kind, example)))
            for mac, document in sent.items():
                file_of(mac, folder).write_text(json.dumps(document))
            send(controller.port, online, folder)

            before, digests = stored(controller)
            ok(controller.port, *backup, folder)
            files = contents(folder)
            self.assertEqual((len(files), len(online) > 430), (560, True))
            pipe(b"", tool("zov-check"), *Path(folder).iterdir(), out=b"")
            controller.ok("rst", "--mac", ",".join(online), "--factory")
            ok(controller.port, *backup, other)
            changed = {name for name, text in contents(other).items() if text != files[name]}
            self.assertEqual(changed, {file_of(mac).name for mac in online})
            send(controller.port, online, folder)
            self.assertEqual(stored(controller)[0], before)
            ok(controller.port, *backup, folder)
            self.assertEqual(contents(folder), files)
        # Every setting is in them as it was sent, those that the security mode hides included.
        for mac, document in [*sent.items()][:7] + [*sent.items()][-7:]:
            kind, password = online[mac], document["wtp_cfg"].get("password")
            exported = json.loads(files[file_of(mac).name])
            ids = {row.id for path, row in settings.TABLE[kind].items()
                   if path not in NOT_EXPORTED}
            asked, kept = ({item for item in settings.split(settings.Walk(kind).walk(one))
                            if item[0] in ids} for one in (document, exported))
            self.assertEqual((asked - kept, ids - {number for number, *_ in kept}), (set(), set()))
            if kind == settings.AP and password is not None:
                self.assertEqual(digests[mac], hashlib.md5(password.encode() + b"\n").hexdigest())

    def test_a_directory_is_written_as_a_whole(self):
        gone = start(["true"])
        gone.wait()
        with Controller("--aps", "300") as controller, tempfile.TemporaryDirectory() as folder:
            backup, file, next_file = ("--format", "cfg", "--directory", folder), *(
                file_of(mac, folder) for mac in (AP, "02:A3:00:00:00:02"))

            def begun():
                return [name for name in os.listdir(folder) if name.startswith(".")]
            kept = []
            for process in (gone.pid, "x", os.getpid()):
                kept += [f".zov-export.{process}"] * (process != gone.pid)
                left = Path(folder, f".zov-export.{process}")
                left.mkdir()
                file_of(AP, left).write_text("{}")
                ok(controller.port, *backup)
                self.assertEqual(sorted(begun()), sorted(kept))
            file.unlink()
            file.mkdir()  # it cannot be replaced, the others are
            next_file.write_text("old")
            self.assertEqual(run(controller.port, *backup), (
                1, b"", f"zov-export: cannot replace {file}: Is a directory\n"))
            self.assertIn("wtp_cfg", next_file.read_text())
            for moment in range(8):
                process = start([tool("zov-export"), "--acport", controller.port, *backup],
                                stderr=subprocess.DEVNULL)
                time.sleep(moment * 0.01)
                process.terminate()
                self.assertIn(process.wait(10), (1, 128 + signal.SIGTERM, -signal.SIGTERM))
                self.assertEqual(sorted(begun()), sorted(kept))


def held(cfg, row):
    """What a record holds for a setting: index and bytes of the items that it is sent as."""
    rows = [(cfg, b"")]
    *tables, last = row.path.removeprefix("wtp_cfg.").split("[].")
    for table in tables:
        rows = [(one, at + bytes([n])) for above, at in rows for n, one in enumerate(above[table])]
    if last == "wep.key[]":
        rows = [({"wep.key": one[f"wep.key{n + 1}"]}, at + bytes([n])) for one, at in rows
                for n in range(4)]
    name = last.removesuffix("[]")
    for value, at in ((one[name], at) for one, at in rows if name in one):
        if row.is_number or row.form == "rate":
            yield at, value.to_bytes(2 if row.form == "u16" and value < 1 << 16 else 4, "big")
        elif isinstance(value, list):
            yield at, b"".join(one.split(b"\0")[0].ljust(256, b"\0") if row.form == "hosts" else one
                               for one in value)
        else:
            yield at, value.split(b"\0")[0] if isinstance(value, fields.Text) else value


class HostileConfigurations(unittest.TestCase):
    def test_more_elements_than_can_be_sent(self):
        record = make_records([b"x"], HOSTS, 1, (settings.AP,))[0]
        radio = record["wtp_cfg"][0]["radio"] = record["wtp_cfg"][0]["radio"][:1] or [{}]
        wlan = radio[0]["wlan"][0]
        wlan["acl.mac"] = [fields.Mac(b"\2" + n.to_bytes(5, "big")) for n in range(257)]
        for count, few, path in ((1, "257 elements, 256", "radio[].wlan[].acl.mac[]"),
                                 (257, "257 elements, 256", "radio[].wlan[]")):
            radio[0]["wlan"] = [wlan] * count
            _, _, err = run(Player(fields.reply([record])).port, "--format", "cfg")
            self.assertIn(f"zov-export: wtp_cfg.{path}: {few} can be sent (devices: 1, first ", err)

    def test_devices_that_are_listed_twice_or_without_a_configuration(self):
        one, other = make_records([b"x"], HOSTS, 1, (settings.AP, settings.AP))
        one["mac"], other["wtp_cfg"] = fields.Mac(b"\2\0\0\0\0\1"), []
        for records, options, status in (([one, other, one], ["--partial"], 1), ([one], [], 1),
                                         ([one, other], ["--partial"], 0)):
            with tempfile.TemporaryDirectory() as folder:
                done = run(Player(fields.reply(records)).port, "--format", "cfg", "--directory",
                           "backup", *options, cwd=folder)
                self.assertEqual((done[0], os.listdir(f"{folder}/backup")),
                                 (status, ["02-00-00-00-00-01.json"]))
            self.assertEqual("lists 02:00:00:00:00:01 again, which is left out\n" in done[2],
                             len(records) == 3)

    def test_what_can_be_sent_is_and_all_else_is_named(self):
        words = [word for word in HOSTILE if len(word) < 300]
        for seed in range(24):
            kind, mac = ((settings.AP, AP), (settings.SWITCH, SWITCH))[seed % 2]
            record = make_records(words, HOSTS, seed, (kind,))[0]
            player = Player(fields.reply([record]), b"\0\0", fields.reply([record]))
            with self.subTest(seed=seed), tempfile.TemporaryDirectory() as folder:
                file = file_of(mac, folder)
                status, _, err = run(player.port, "--format", "cfg", "--output", str(file))
                self.assertEqual(status, 1)
                send(player.port, {mac: kind}, folder)
                self.assertEqual(run(player.port, "--format", "cfg", "--partial"),
                                 (0, file.read_bytes(), err))
                items, lost = set(settings.split(player.requests[1][19:-2])), set()
                table = {path: row for path, row in settings.TABLE[kind].items()
                         if path not in NOT_EXPORTED | {ADDRESS}}
                for path, row in table.items():
                    for at, sent in held(record["wtp_cfg"][0], row):
                        if (row.id, at, sent) in items:
                            items.remove((row.id, at, sent))
                        else:
                            lost.add(path)
                            bad = row.form != "text" or "\ufffd" in sent.decode("utf-8", "replace")
                            self.assertTrue(bad or not row.low <= len(sent) <= (row.high or 1e9))
                named = re.findall(r"^zov-export: (\S+): .* \(devices: 1, first ", err, re.M)
                self.assertEqual(len(named), err.count("\n"))
                self.assertEqual(set(named) - {ADDRESS}, lost)
                rest = {number for number, *_ in items}
                self.assertEqual(rest & {row.id for row in table.values()}, set())


main()
