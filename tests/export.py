#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""zov-export against ac-sim, and against a controller that plays records with hostile texts:
export.py ZOV AC_SIM SOURCE_FOLDER ZOV_EXPORT GENERATED_FOLDER
"""
import csv
import hashlib
import io
import json
import os
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path
from xml.etree import ElementTree

import fields
import settings
from harness import Player, main
from simulator import AP, SWITCH, ZOV, Controller, end_with_test

try:
    from jsonschema import Draft202012Validator
except ImportError:
    Draft202012Validator = None  # the documents are not compared with the schema

ZOV_EXPORT, GENERATED = sys.argv[4:6]

HOSTILE = [b"", b"plain", b'say "x" \\ a/b', b"tab\tline\r\nbell\x07", b"cut\0off", b"\x1b]0;title\x07\x1b[31m",
           b"caf\xc3\xa9 \xf0\x9f\x98\x80", b"\xff\xfe", b"\xc0\xaf", b"\xed\xa0\x80x", b"\xe2\x82", b"\xf4\x90\x80\x80",
           b"\xc2\x9b31m\x7f", b'"' * 3000, b"\xe2\x82\xac" * 2000, b"=1+1", b"@x", b"\tx", b"-a,b", b"#{x}\n",
           b'{"a": [1, "b\\u0041", {}], "c":\n[]}', b'{"a":1}x', b"[1e5,-0.5, true ,null]", b"01", b"[1,]", b'"\xff"',
           b'"\x7f\xc2\x9b"', b"[" * 64 + b"]" * 64, b"[" * 65 + b"]" * 65, b"NaN", b"[\"\\x\"]", b"-", b"1.", b'"\t"', b'"\\ud800"', b'"\\ud83d\\ude00"', b"1e999"]
HOSTS = [b"host", b'"q"/\\', b"a\x1f", b"\x7fb", b"c\x80"]
FOREIGN = re.compile(rb"[\0-\x09\x0b-\x1f\x7f]|\xc2[\x80-\x9f]")  # nothing of this may be written


def run(port, *options, before=end_with_test):
    done = subprocess.run([ZOV_EXPORT, "--acport", port, *options], capture_output=True, timeout=60,
                          preexec_fn=before)
    return done.returncode, done.stdout, done.stderr.decode()


def ok(port, *options):
    status, out, err = run(port, *options)
    assert status == 0 and (err == "" or "cfg" in options), (options, status, err)
    return out


def clean(text):
    """What formats without escapes show of a text."""
    return re.sub(r"[\0-\x1f\x7f-\x9f]", "\ufffd", text.split(b"\0")[0].decode("utf-8", "replace"))


def make_records(words, hosts, seed, kinds=(3, 2, 1)):
    """Records of each kind; the same for the same seed but for their texts."""
    made = []
    for number, kind in enumerate(kinds):
        maker = fields.Maker(seed + number, counts=(0, 1, 2), words=words, hosts=hosts)
        record = maker.record(kind, cfg=True, detail=True)
        hosts_of = [fields.Text(maker.random.choice(words)[:256].ljust(256, b"\0")) for _ in range(3)]
        record["wtp_cfg"][0]["ac_list"] = hosts_of
        made.append(record)
    return made


def refuse_constant(name):
    raise ValueError(name)


def parsed(text):
    """What hotspot20 becomes."""
    shown = text.split(b"\0")[0]
    try:
        assert shown != HOSTILE[28]  # one too deep
        made = json.loads(shown.decode(), parse_constant=refuse_constant) if shown else None
        json.dumps(made, ensure_ascii=False, allow_nan=False).encode()  # no lone surrogate, no infinity
        return made
    except (ValueError, AssertionError):
        return shown.decode("utf-8", "replace")


def translated(value, path=""):
    """A report of records whose texts are numbers of HOSTILE and HOSTS, with the texts that those stand for."""
    if isinstance(value, dict):
        return {name: translated(part, f"{path}.{name}") for name, part in value.items()}
    if isinstance(value, list):
        return [translated(part, path) for part in value]
    found = re.fullmatch(r"7{9}([wh])(\d{3})", str(value).replace("8" * 9, "w").replace("9" * 9, "h"))
    if found is None:
        return value
    text = {"w": HOSTILE, "h": HOSTS}[found[1]][int(found[2])]
    if path.endswith(".hotspot20"):
        return parsed(text)
    if found[1] == "h":
        return fields.Host(text).shown()
    text = text[:256] if path.endswith(".ac_list") else text
    text = text.split(b"\0")[0].translate(None, b"\r\n") if path.endswith(".dev_list.model") else text
    return text.split(b"\0")[0].decode("utf-8", "replace")


PLAIN = [b"7" * 9 + b"8" * 9 + b"%03d" % n for n in range(len(HOSTILE))]
PLAIN_HOSTS = [b"7" * 9 + b"9" * 9 + b"%03d" % n for n in range(len(HOSTS))]


class Json(unittest.TestCase):
    maxDiff = 2000

    def test_hostile_texts_in_every_member(self):
        for seed in range(40):
            report = fields.report(make_records(PLAIN, PLAIN_HOSTS, seed), "json").decode("latin-1")
            expected = translated(json.loads("{" + report + "}"))
            port = Player(*[fields.reply(make_records(HOSTILE, HOSTS, seed))] * 2).port
            out = ok(port, "--format", "json")
            self.assertIsNone(FOREIGN.search(out))
            made = json.loads(out, parse_constant=refuse_constant)
            self.assertEqual(made, expected)
            self.assertEqual([json.loads(line) for line in ok(port, "--format", "ndjson").splitlines()],
                             made["wtp_list"])

    @unittest.skipIf(Draft202012Validator is None, "jsonschema is missing (package python3-jsonschema)")
    def test_schema(self):
        schema = json.loads(Path(GENERATED, "wtp_list.schema.json").read_text())
        Draft202012Validator.check_schema(schema)
        validator = Draft202012Validator(schema)
        for seed in range(20):
            made = json.loads(ok(Player(fields.reply(make_records(HOSTILE, HOSTS, seed))).port, "--format", "json"))
            validator.validate(made)
            for device in made["wtp_list"]:  # the schema is strict
                for name in ("sn", "wtp_cfg", "cfg_cap", "radio", "dev_list"):
                    less = {member: value for member, value in device.items() if member != name}
                    required = name in device and name != "wtp_cfg"
                    self.assertEqual(validator.is_valid({"wtp_list": [less]}), not required, name)
                for more in ({"colour": 1}, {"mac": "2:0"}, {"state": 256}, {"cfg_cap": [0] * 20}):
                    self.assertFalse(validator.is_valid({"wtp_list": [device | more]}))

    def test_page_has_every_member(self):
        def paths(value, path=""):
            if isinstance(value, dict):
                return set().union(*({f"{path}.{name}".lstrip(".")} | paths(part, f"{path}.{name}".lstrip("."))
                                     for name, part in value.items()))
            if isinstance(value, list) and value and not isinstance(value[0], int):
                return {f"{path}[]"}.union(*(paths(part, f"{path}[]") for part in value))
            return set()
        printed = set()
        for seed in range(60):
            for choices in ((), ("password",), ("basic",)):
                report = fields.report(make_records(PLAIN, PLAIN_HOSTS, seed), "json", *choices).decode()
                printed |= set().union(*map(paths, json.loads("{" + report + "}")["wtp_list"]))
        printed -= {path.removesuffix("[]") for path in printed if path.endswith("[]")}  # an array's own name
        page = set(re.findall(r"^\.It Va (\S+)", Path(GENERATED, "zov-report.5").read_text(), re.M))
        self.assertEqual(page, printed)

    def test_formats_for_people(self):
        with Controller() as controller:
            table = ok(controller.port, "--format", "table").decode()
            macs = ok(controller.port, "--format", "macs", "--kind", "switch")
            rows = [re.split("  +", line) for line in table.splitlines()]
            self.assertEqual(rows[0], "NAME MAC KIND MODEL FIRMWARE STATIONS UPTIME STATE".split())
            for row, device in zip(rows[1:], json.loads(ok(controller.port, "--format", "json"))["wtp_list"]):
                days, hours = device["uptime"] // 86400, device["uptime"] // 3600
                uptime = f"{days}d {hours % 24}h" if days else f"{hours}h {device['uptime'] // 60 % 60}m"
                stations = [str(sum(len(wlan["sta"]) for radio in device["radio"] for wlan in radio["wlan"]))
                            if device.get("radio") else "-"]
                self.assertEqual([row[0], row[1], row[3], row[4]], [device[key] for key in
                                                                    ("name", "mac", "model", "sw_ver")])
                self.assertEqual([row[5], row[7]], [*stations, "online" if device["state"] == 5 else "offline"])
                self.assertEqual(row[6], uptime if device["state"] == 5 and hours else row[6])
            self.assertEqual(macs, b"02:A2:00:00:00:01,02:A2:00:00:00:02\n")
            self.assertEqual(run(controller.port, "--format", "macs", "--kind", "switch", "--exclude", "sw*"),
                             (1, b"", "zov-export: no device is chosen\n"))

    def test_choice_of_devices(self):
        with Controller() as controller:
            def names(*options):
                return [json.loads(line)["name"] for line in ok(controller.port, "--format", "ndjson", *options).splitlines()]
            self.assertEqual(names("--mac", f"{SWITCH},{AP}"), ["ap-floor1-01", "sw-floor1"])
            self.assertEqual(names("--name", "*-floor1-0[2-4]"), [f"ap-floor1-0{n}" for n in (2, 3, 4)])
            self.assertEqual(names("--name", "sw*1", "--mac", "02:A3:00:00:00:02"), ["ap-floor1-02", "sw-floor1"])
            self.assertEqual(names("--kind", "switch", "--exclude", SWITCH), ["sw-floor2"])
            self.assertEqual(run(controller.port, "--format", "json", "--name", "x"), (
                1, b'{"wtp_list":[]}\n', "zov-export: no device has a name that matches 'x'\n"))
            status, out, err = run(controller.port, "--format", "ndjson", "--mac", f"{AP},02:00:00:00:00:01")
            self.assertEqual((status, out.count(b"\n"), err),
                             (1, 1, "zov-export: the controller knows no device 02:00:00:00:00:01\n"))


def held(cfg, path):
    """What a record's configuration holds for a setting: [(value, path with positions)]."""
    rows = [(cfg, "wtp_cfg.")]
    *tables, last = path.removeprefix("wtp_cfg.").split("[].")
    for table in tables:
        rows = [(row, f"{at}{table}[{n}].") for above, at in rows for n, row in enumerate(above[table])]
    if last == "wep.key[]":
        return [(row[f"wep.key{n + 1}"], f"{at}wep.key[{n}]") for row, at in rows for n in range(4)]
    last = last.removesuffix("[]")
    return [(row[last], at + last) for row, at in rows if last in row]


def setting_at(document, path):
    """A setting of a document by its path with positions; None when it is not there."""
    for part in re.findall(r"\w+", path):
        if isinstance(document, list):
            document = document[int(part)]
        elif part not in document:
            return None
        else:
            document = document[part]
    return None if isinstance(document, dict) else document  # what stands for a key that is left out


def as_setting(row, value, kind):
    """A value of a record as the setting that it can be sent as; None: it cannot."""
    if row.is_number:
        number = fields.shown(value, "" if row.low >= 0 else "-" if row.form == "u32" else "'")
        number = fields.shown(value, "-") if row.path.endswith("limit") and "wlan" in row.path else number
        return number if row.low <= number <= row.high else None
    if row.form in ("ipv4", "server"):
        return fields.shown(value)
    if row.form == "rate":
        text = fields.data_rate(fields.shown(value, "-"))
        code = fields.shown(value, "-")
        same = code <= 0 or code < 33 or 101 <= code <= 110 or code > 110 and code % 100 == 0
        return text if same and 2 <= len(text) <= 7 and (code != 0 or text == "auto") else None
    texts = [fields.shown(one).encode("latin-1") if isinstance(one, bytes) else one
             for one in (value if isinstance(value, list) else [value])]
    if any(len(text) < row.low or len(text) > (row.high if row.high is not None else 65535) or
           "\ufffd" in text.decode("utf-8", "replace") for text in texts):
        return None
    texts = [text.decode() for text in texts]
    if not isinstance(value, list):
        return texts[0]
    unique = row.form == "macs" or kind == settings.AP
    bad = row.form == "macs" and any(int(text[:2], 16) & 1 or set(text) <= set("0:") for text in texts)
    return None if bad or unique and len(set(texts)) < len(texts) else texts


# What records do not have, and what devices change by themselves.
NOT_IN_RECORDS = {"wtp_cfg.password", "wtp_cfg.pd_lifeguard[].clear_reboot_count"}
STATES = {"wtp_cfg.pd_lifeguard[].reboot_count", "wtp_cfg.pd_lifeguard[].status",
          *(row.path for row in settings.TABLE[settings.SWITCH].values() if "pdl_status" in row.path)}
NOT_EXPORTED = NOT_IN_RECORDS | STATES


class Configurations(unittest.TestCase):
    def test_backup_reset_restore(self):
        shapes = {"wtp_cfg.radio[]": 2, "wtp_cfg.radio[].wlan[]": 5, "wtp_cfg.radio[].wlan[].wep.key[]": 4,
                  "wtp_cfg.lan_port[]": 2, "wtp_cfg.pdl_status[]": 2}
        for kind, mac, example in ((settings.AP, AP, "office-ap"), (settings.SWITCH, SWITCH, "poe-switch")):
            made = {"wtp_cfg": settings.Documents(7, kind, shapes).group()}
            for radio in made["wtp_cfg"].get("radio", []):
                for mode, wlan in zip((0, 1, 3, 6, 13), radio["wlan"]):
                    wlan["sec_mode"] = mode
            for document in (made, json.loads(Path(f"{sys.argv[3]}/examples/{example}.json").read_text())):
                with self.subTest(kind=kind), Controller() as controller, tempfile.TemporaryDirectory() as folder:
                    self.check(controller, Path(folder, mac.replace(":", "-") + ".json"), kind, mac, document)

    def check(self, controller, file, kind, mac, document):
        def stored():
            cfg = controller.record(mac)["wtp_cfg"]
            rules = [rule | {"reboot_count": 0, "status": ""} for rule in cfg.get("pd_lifeguard", [])]
            return cfg | {"password_md5": None, "pd_lifeguard": rules, "pdl_status": None}
        backup = ("--format", "cfg", "--mac", mac, "--directory", str(file.parent))
        controller.configure(mac, kind, document)
        digest = controller.record(mac)["wtp_cfg"].get("password_md5")
        before = stored()
        ok(controller.port, *backup)
        first = file.read_bytes()
        controller.ok("rst", "--mac", mac, "--factory")
        self.assertNotEqual(stored(), before)
        controller.ok("cfg", "--mac", mac, "--type", str(settings.AP - kind), "--file", str(file))
        self.assertEqual(stored(), before)
        ok(controller.port, *backup)
        self.assertEqual(file.read_bytes(), first)
        self.assertEqual(os.listdir(file.parent), [file.name])
        # Every setting is in it as it was sent, those that the security mode hides included.
        ids = {row.id for row in settings.TABLE[kind].values() if row.path not in NOT_EXPORTED}
        sent, kept = ({item for item in settings.split(settings.Walk(kind).walk(one)) if item[0] in ids}
                      for one in (document, json.loads(first)))
        self.assertEqual((sent - kept, ids - {number for number, *_ in kept}), (set(), set()))
        password = document["wtp_cfg"].get("password")
        if kind == settings.AP and password is not None:
            self.assertEqual(digest, hashlib.md5(password.encode() + b"\n").hexdigest())

    def test_documents_of_any_record_can_be_sent(self):
        left = sent = 0
        for seed in range(24):
            kind = (settings.AP, settings.SWITCH)[seed % 2]
            words = [word for word in HOSTILE if len(word) < 300]
            record = make_records(words, HOSTS, seed, (kind,))[0]
            cfg = record["wtp_cfg"][0]
            player = Player(fields.reply([record]), b"\0\0")
            with self.subTest(seed=seed), tempfile.TemporaryDirectory() as folder:
                status, out, err = run(player.port, "--format", "cfg", "--output", f"{folder}/f")
                self.assertEqual((status, out), (int(err != ""), b""))
                self.assertNotRegex(err, r"[\0-\x09\x0b-\x1f\x7f-\x9f]")
                text = Path(folder, "f").read_bytes()
                self.assertIsNone(FOREIGN.search(text))
                done = subprocess.run([ZOV, "cfg", "--acport", player.port, "--mac", AP, "--type",
                                       str(settings.AP - kind), "--file", f"{folder}/f"], capture_output=True)
                self.assertEqual((done.returncode, done.stderr), (0, b""))
                made, lost = json.loads(text), set()
                for row in settings.TABLE[kind].values():
                    if row.path in NOT_EXPORTED or row.form in ("digest", "ipset"):
                        continue
                    for value, path in held(cfg, row.path):
                        expected = as_setting(row, value, kind)
                        self.assertEqual(setting_at(made, path), expected, path)
                        lost |= {row.path} if expected is None else set()
                        left += expected is None
                        sent += expected is not None
                self.assertLessEqual(lost, set(re.findall(r"^zov-export: (\S+): .* \(devices: 1, first ", err, re.M)))
                self.assertEqual(run(Player(fields.reply([record])).port, "--format", "cfg", "--partial")[::2],
                                 (0, err))
        self.assertGreater(min(left, sent), 300)

    def test_a_directory_is_written_as_a_whole(self):
        gone = subprocess.Popen(["true"])
        gone.wait()
        name = AP.replace(":", "-") + ".json"
        with Controller("--aps", "300") as controller, tempfile.TemporaryDirectory() as folder:
            backup = ("--format", "cfg", "--directory", folder)
            for process, kept in ((gone.pid, []), (os.getpid(), [f".zov-export.{os.getpid()}"])):
                left = Path(folder, f".zov-export.{process}")
                left.mkdir()
                Path(left, name).write_text("{}")
                ok(controller.port, *backup)
                self.assertEqual([one for one in os.listdir(folder) if one.startswith(".")], kept)
            Path(folder, name).unlink()
            Path(folder, name).mkdir()  # it cannot be replaced, the others are
            Path(folder, "02-A3-00-00-00-02.json").write_text("old")
            self.assertEqual(run(controller.port, *backup), (
                1, b"", f"zov-export: cannot replace {folder}/{name}: Is a directory\n"))
            self.assertIn("wtp_cfg", Path(folder, "02-A3-00-00-00-02.json").read_text())
            for moment in range(8):
                process = subprocess.Popen([ZOV_EXPORT, "--acport", controller.port, *backup], stderr=subprocess.DEVNULL)
                time.sleep(moment * 0.01)
                process.terminate()
                self.assertIn(process.wait(10), (1, 128 + signal.SIGTERM, -signal.SIGTERM))
                self.assertEqual([one for one in os.listdir(folder) if one.startswith(".")], kept)

    def test_what_cannot_be_configured(self):
        bridge = "02:A1:00:00:00:01"
        with Controller() as controller:
            self.assertEqual(run(controller.port, "--format", "cfg", "--mac", bridge),
                             (1, b"", "zov-export: there is no configuration to write\n"))
            several = ok(controller.port, "--format", "cfg", "--name", "*1-0[12]").decode()
            first, end = json.JSONDecoder().raw_decode(several)
            self.assertEqual((first["wtp_cfg"]["name"], json.loads(several[end:])["wtp_cfg"]["name"]),
                             ("ap-floor1-01", "ap-floor1-02"))


class Tables(unittest.TestCase):
    def test_csv(self):
        for seed in range(10):
            records = make_records(HOSTILE, HOSTS, seed)
            out = ok(Player(fields.reply(records)).port, "--format", "csv", "--columns", "serial,mac,name,location,port")
            self.assertTrue(out.endswith(b"\r\n") and b"\n" not in out.replace(b"\r\n", b""))
            cells = list(csv.reader(io.StringIO(out.decode(), newline="")))
            self.assertEqual(cells[0], ["serial", "mac", "name", "location", "port"])
            for row, record in zip(cells[1:], records, strict=True):
                texts = [record["sn"], record["name"], record["wtp_cfg"][0]["location"]]
                shown = [("'" if text[:1] in (b"=", b"+", b"-", b"@", b"\t", b"\r") else "") + clean(text)
                         for text in texts]
                self.assertEqual(row, [shown[0], fields.shown(record["mac"]), *shown[1:], str(record["port"])])
        with Controller() as controller:
            rows = list(csv.DictReader(io.StringIO(ok(controller.port, "--format", "csv").decode())))
            self.assertEqual(len(rows), 9)
            record = controller.record(AP)
            stations = sum(len(wlan["sta"]) for radio in record["radio"] for wlan in radio["wlan"])
            self.assertEqual(rows[0] | {"uptime": 0}, {
                "mac": AP, "name": "ap-floor1-01", "kind": "access_point", "model": "AP-220", "serial": "SN3000001",
                "location": "Floor 1", "address": "10.3.0.1", "managed": "yes", "state": "online",
                "firmware": record["sw_ver"], "uptime": 0, "stations": str(stations)})

    @staticmethod
    def samples(text):
        """Metrics by name and labels."""
        found = {}
        for line in text.splitlines():
            if not line.startswith("#"):
                name, labels, value = re.fullmatch(r'(\w+)(?:\{((?:\w+="(?:[^"\\]|\\.)*",?)+)\})? (-?\d+)', line).groups()
                labels = {key: re.sub(r"\\(.)", r"\1", value)
                          for key, value in re.findall(r'(\w+)="((?:[^"\\]|\\.)*)"', labels or "")}
                found.setdefault(name, []).append((labels, int(value)))
        return found

    def check_with_promtool(self, text):
        if shutil.which("promtool") is None:
            self.skipTest("promtool is missing (package prometheus)")
        done = subprocess.run(["promtool", "check", "metrics"], input=text, capture_output=True, timeout=60)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, b"", b""))

    def test_prometheus(self):
        with Controller("--aps", "40", "--switches", "4") as controller:
            controller.ok("upg", "--mac", AP)
            text = ok(controller.port, "--format", "prometheus", "--metrics", "all")
            device, fleet = (ok(controller.port, "--format", "prometheus", *options).decode()
                             for options in ((), ("--metrics", "fleet")))
            devices = json.loads(ok(controller.port, "--format", "json"))["wtp_list"]
        found = self.samples(text.decode())
        for name, expected in (("zov_devices", len(devices)), ("zov_devices_upgrading", 1),
                               ("zov_device_up", sum(device["state"] == 5 for device in devices)),
                               ("zov_device_upgrade_pending", 1), ("zov_device_info", len(devices)),
                               ("zov_controller_up", 1), ("zov_stations", sum(
                                   len(wlan["sta"]) for one in devices for radio in one.get("radio", [])
                                   for wlan in radio["wlan"]))):
            self.assertEqual(sum(value for _, value in found[name]), expected, name)
        wlans = [(device["mac"], str(r + 1), str(w + 1), cfg["ssid"], wlan) for device in devices
                 for r, radio in enumerate(device.get("radio", []))
                 for w, (wlan, cfg) in enumerate(zip(radio["wlan"], device["wtp_cfg"]["radio"][r]["wlan"]))]
        for name, value in (("stations", lambda wlan: len(wlan["sta"])),
                            ("transmit_bytes_total", lambda wlan: wlan["tx_bytes"]),
                            ("receive_bytes_total", lambda wlan: wlan["rx_bytes"]),
                            ("transmit_packets_total", lambda wlan: wlan["tx_pkt"]),
                            ("receive_packets_total", lambda wlan: wlan["rx_pkt"])):
            self.assertEqual(found[f"zov_wlan_{name}"], [
                ({"mac": mac, "radio": radio, "wlan": number, "ssid": ssid}, value(wlan))
                for mac, radio, number, ssid, wlan in wlans], name)
        switches = [device for device in devices if device["wtp_type"] == 2 and device["state"] == 5]
        self.assertEqual(found["zov_poe_allocated_watts"], [
            ({"mac": device["mac"]}, sum(port["output_power"] for port in device["poe_port"])) for device in switches])
        self.assertAlmostEqual(found["zov_list_timestamp_seconds"][0][1], time.time(), delta=20)
        self.assertEqual(len(found["zov_device_upgrade_state"]), 1)
        self.assertNotRegex(device, "wlan=|port=|radio=")
        self.assertLess(len(device), 750 * len(devices))
        self.assertNotIn("mac=", fleet)
        self.check_with_promtool(text)
        with tempfile.TemporaryDirectory() as folder:  # a controller that is gone shows
            status, _, err = run("1", "--format", "prometheus", "--output", f"{folder}/f")
            left = Path(folder, "f").read_text()
        self.assertEqual((status, "Connection refused" in err), (1, True))
        self.assertEqual(re.sub("(?m)^#.*\n", "", left), "zov_controller_up 0\n")

    def test_prometheus_of_hostile_texts(self):
        texts = []
        for seed in range(5):
            records = make_records(HOSTILE, HOSTS, seed) * 2  # each device twice
            status, text, err = run(Player(fields.reply(records)).port, "--format", "prometheus", "--metrics", "all")
            self.assertEqual((status, len(re.findall("again, which is left out\n", err))), (1, 3))
            texts.append(text)
            self.assertIsNone(FOREIGN.search(texts[-1]))
            found = self.samples(texts[-1].decode())
            self.assertEqual([labels["name"] for labels, _ in found["zov_device_info"]],
                             [clean(record["name"]) for record in records[:3]])
        for text in texts:
            self.check_with_promtool(text)


class Graph(unittest.TestCase):
    def render(self, text):
        if shutil.which("dot") is None:
            self.skipTest("dot is missing (package graphviz)")
        done = subprocess.run(["dot", "-Tsvg"], input=text, capture_output=True, timeout=60)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        ElementTree.fromstring(done.stdout)  # it is XML
        return done.stdout.decode()

    @staticmethod
    def edges(text):
        """The links: both devices, each with the text of its port if it is a switch."""
        ports = {mac: re.findall(r'<TD PORT="p\d+">(.*?)</TD>', label)
                 for mac, label in re.findall(r'^ +"(\S+)" \[shape=none, .*?label=<(.*)>\];$', text, re.M)}

        def port(mac, cell):
            return ports[mac][int(cell)] if cell else None
        return {(one, port(one, cell), other, port(other, other_cell)) for one, cell, other, other_cell in
                re.findall(r'^  "(\S+?)"(?::p(\d+):e)? -- "(\S+?)"(?::p(\d+):e|:w)', text, re.M)}

    def test_topology(self):
        fleet = ("--aps", "20", "--switches", "3")
        with Controller(*fleet) as controller, Controller(*fleet) as same:
            text = ok(controller.port, "--format", "dot")
            self.assertEqual(ok(same.port, "--format", "dot"), text)
            around = {name: ok(controller.port, "--format", "dot", "--around", name)
                      for name in ("sw-floor2", "02:A2:00:00:00:02")}
            self.assertEqual(run(controller.port, "--format", "dot", "--around", "x"),
                             (1, b"", "zov-export: there is no switch 'x'\n"))
            devices = {device["mac"]: device for device in json.loads(ok(controller.port, "--format", "json"))["wtp_list"]}
        online = {mac for mac, device in devices.items() if device["state"] == 5}
        switches, aps = ([f"02:A{kind}:00:00:00:{n:02X}" for n in range(1, count + 1)] for kind, count in ((2, 3), (3, 20)))
        expected = {(switches[n // 8], str(n % 8 + 1), aps[n], None) for n in range(20) if aps[n] in online}
        expected |= {(one, "10", other, "9") for one, other in zip(switches, switches[1:])}
        self.assertLess(len(online), len(devices))
        self.assertEqual(self.edges(text.decode()), expected)
        for mac, number, *_ in expected:  # the ports of the report agree
            port = devices[mac]["switch_port"][int(number) - 1]
            self.assertEqual((port["port"], port["link_status"]), (int(number), 1))
        self.assertEqual(self.render(text).count('class="edge"'), len(expected))
        near = {edge for edge in expected if switches[1] in edge}
        for name in ("sw-floor2", switches[1]):
            self.assertEqual(self.edges(around[name].decode()), near)

    def test_what_neighbours_tell(self):
        one, other = make_records([b"n"], [b"h"], 1, (2, 2))
        ap, far = fields.Mac(b"\2\0\0\0\0\3"), fields.Mac(b"\2\0\0\0\0\4")
        names = [fields.shown(mac) for mac in (one["mac"], other["mac"], ap, far)]

        def lldp(mac, port, remote):
            return {"mac": mac, "localPort": port, "remotePort": remote, "name": b"", "model": b""}

        def device(mac, kind, *links):
            return dict.fromkeys(("system_time", "update_time", "link_info_last_time", "no_link_info_first_time"), 1) | {
                "type": kind, "mac": mac, "ip": fields.Ip(4), "name": b"", "model": b"",
                "link": [{"local_port": port, "mac": to, "remote_port": remote} for port, to, remote in links]}
        # A single cable: each end's own name for its port. Two: as the end tells that knows of both.
        for back, ports in (([lldp(one["mac"], 7, b"x")], {("5", "7")}), ([], {("5", "ge5")}),
                            ([lldp(one["mac"], 7, b"x"), lldp(one["mac"], 8, b"y")], {("x", "7"), ("y", "8")})):
            one |= {"lldp_dev_list": [lldp(other["mac"], 5, b"ge5"), lldp(one["mac"], 6, b"self")],
                    "dev_list": [device(ap, 3, (3, one["mac"], b"eth1")), device(far, 2, (4, ap, b"p"), (9, fields.Mac(6), b"")),
                                 device(other["mac"], 2, (1, one["mac"], b"not this one"))]}
            other |= {"lldp_dev_list": back, "dev_list": []}
            text = ok(Player(fields.reply([one, other])).port, "--format", "dot").decode()
            edges = set()
            for left, left_port, right, right_port in self.edges(text):
                ends = sorted(((names.index(left), left_port), (names.index(right), right_port)))
                edges.add((ends[0][0], ends[1][0], ends[0][1], ends[1][1]))
            self.assertEqual(edges, {(0, 1, *pair) for pair in ports} | {(0, 2, "3", None), (2, 3, None, "4")})
            self.assertEqual(text.count(",dashed"), 1)

    def test_hostile_texts(self):
        for seed in range(5):
            text = ok(Player(fields.reply(make_records(HOSTILE, HOSTS, seed, (2, 2, 3)))).port, "--format", "dot")
            self.assertIsNone(FOREIGN.search(text))
            self.render(text)


class Faults(unittest.TestCase):
    def test_wrong_usage(self):
        known = "json ndjson cfg csv prometheus dot table macs"
        page = Path(sys.argv[3], "man/zov-export.1").read_text().split("The columns are")[1].split(".El")[0]
        columns = " ".join(re.findall(r"\w+", " ".join(re.findall(r"^\.It Cm (.*)", page, re.M))))
        for options, message in (
                ([], "--format is missing, see --help"),
                (["--format", "xml"], f"--format: bad argument 'xml', expected one of: {known}"),
                (["--format", "cfg", "--output", "f", "--directory", "d"], "--output and --directory exclude each other"),
                (["--format", "json", "--directory", "d"], "--directory is for --format cfg"),
                (["--format", "json", "--columns", "mac"], "--columns is for --format csv"),
                (["--format", "csv", "--partial"], "--partial is for --format cfg"),
                (["--format", "csv", "--around", "x"], "--around is for --format dot"),
                (["--format", "csv", "--metrics", "all"], "--metrics is for --format prometheus"),
                (["--format", "csv", "--columns", "mac,x\x1b"], f"--columns: bad argument 'mac,x?', expected one of: {columns}"),
                (["--format", "csv", "--columns", ""], f"--columns: bad argument '', expected one of: {columns}"),
                (["--format", "json", "--mac", "02:00"], "--mac: bad argument '02:00', expected addresses joined by commas"),
                (["--format", "json", "--output", ""], "--output: bad argument ''"),
                (["--format", "json", "x"], "unexpected argument 'x'")):
            with self.subTest(options=options):
                self.assertEqual(run("1", *options), (2, b"", f"zov-export: {message}\n"))
        self.assertRegex(ok("1", "--version"), rb"^zov-export \d+\.\d+\.\d+\n$")

    def test_silent_controller(self):
        record = fields.reply(make_records([b"x"], [b"h"], 1))
        for reply in (None, b"", record[:-1]):
            with tempfile.TemporaryDirectory() as folder:
                Path(folder, "f").write_text("old")
                status, out, err = run(Player(reply, holds=True).port, "--format", "json", "--timeout", "1", "--output", f"{folder}/f")
                self.assertEqual((status, out), (1, b""))
                self.assertTrue(err.endswith("does not answer within 1 s\n"), err)
                self.assertEqual((os.listdir(folder), Path(folder, "f").read_text()), (["f"], "old"))

    def test_output_that_cannot_be_written(self):
        def limit(action):
            def before():
                end_with_test()
                signal.signal(signal.SIGXFSZ, action)
                resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000))
            return before
        with Controller() as controller, tempfile.TemporaryDirectory() as folder:
            self.assertEqual(run(controller.port, "--format", "csv", "--output", "/dev/full"),
                             (1, b"", "zov-export: cannot write /dev/full: No space left on device\n"))
            for form in ("json", "ndjson", "cfg", "csv", "prometheus", "dot"):
                target = Path(folder, "f")
                target.write_text("old")
                for action in (signal.SIG_IGN, signal.SIG_DFL):
                    columns = ["--columns", ",".join(["mac"] * 20)] if form == "csv" else []
                    status, _, err = run(controller.port, "--format", form, "--output", str(target), *columns,
                                         before=limit(action))
                    self.assertEqual((form, status, os.listdir(folder), target.read_text()), (form, 1, ["f"], "old"))
                    self.assertIn(f"zov-export: cannot write {target}: File too large\n", err)
                ok(controller.port, "--format", form, "--output", str(target))
                self.assertNotEqual(target.read_text(), "old")
            status, _, err = run(controller.port, "--format", "cfg", "--directory", f"{folder}/f")
            self.assertEqual((status, "Not a directory" in err), (1, True))


if __name__ == "__main__":
    main()
