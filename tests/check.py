# SPDX-License-Identifier: MIT
"""zov-check on files, good and bad, and the schemas of such files:
check.py ZOV
"""
import hashlib
import json
import os
import re
import resource
import tempfile
import unittest
from pathlib import Path

import settings
from harness import SOURCE, call, generated, is_sanitized, main, needs, run, tool
from settings import AP, SWITCH, TABLE

ZOV_CHECK = tool("zov-check")


def load_files():
    """The files of check.txt: their bytes, the option --type, and what is reported of them."""
    files = []
    for line in Path(__file__).with_name("check.txt").read_text().splitlines():
        if line.startswith("#"):
            continue
        line = re.sub(r"\\x(..)", lambda byte: chr(int(byte[1], 16)), line).replace("¶", "\n")
        if line.startswith("  "):
            files[-1][2].append(line[2:].encode("latin-1").decode())
        else:
            files.append((line[3:].encode("latin-1"), f"--type={int(line[:2] == 'sw')}", []))
    deep = b'{"wtp_cfg":{"comment":' + b"[" * 100000 + b"]" * 100000 + b',"nam":1}}'
    unknown = "Unknown member 'nam' in 'wtp_cfg', did you mean 'name'?"
    return [*files, (deep, "--type=0", ["1 *json iter stack is full.", f"1 {unknown}"])]


def wlan(**members):
    return {"radio": [{"wlan": [members]}]}


# What schemas and zov-check refuse, beyond single values, and what is good all the same.
REFUSED = [
    (AP, {}), (AP, {"radio": {"tx_power": 17}}), (AP, {"radio": [{}]}),
    (AP, {"led": [{"power": 1}]}), (AP, {"ac_list": ["a", "a"]}),
    (AP, {"ac_list": [f"ac{n}.example" for n in range(256)]}),
    (SWITCH, {"switch_port": [{"port": 1}] * 257}), (SWITCH, {"manage_mac_list": ["2:0:0:0:1"]}),
    (AP, wlan(l2macWlist=["0:0:5e:0:53:1"] * 2)), (AP, wlan(acl={"mac": ["01:00:5e:00:00:01"]})),
    *((AP, {"radio": [{"data_rate": rate}]}) for rate in ("5.05M", "0M", "0.1M", "0.20M")),
    (AP, {"name": "x", "comment": {}}), (AP, {"name": "x", "comment": [1, {"a": [{}]}]}),
    (AP, {"radio": [{"txpower": 17}]}), (SWITCH, {"bandsteer": 1}),
    (SWITCH, {"power_budget": {"comment": 1}})]
ACCEPTED = [
    (AP, {"comment": ["red"], "radio": [{"comment": {"tx_power": "x"}}, {"mesh": {"comment": 1}}]}),
    (SWITCH, {"ac_list": [], "manage_mac_list": []}), (SWITCH, {"ac_list": ["a", "a"]}),
    (AP, {"ac_list": [f"ac{n}.example" for n in range(255)]}),
    (AP, {"ipv4": "0.0.0.0/0.0.0.0/0.0.0.0"}),
    (AP, wlan(wep={"key": [{"comment": "none"}, "abcde"]})),
    *((AP, {"radio": [{"data_rate": rate}]}) for rate in ("0.2M", "000.2M", "999999M"))]
# Where the schemas judge otherwise, as zov-cfg(5) tells: its words, members that show it, and
# whether the schema passes them.
DIFFERENCES = [
    ("fraction or exponent", '"bandsteer":1.0', True), ("surrogate", r'"name":"\ud800"', True),
    ("counts characters", '"radio":[{"wlan":[{"ssid":"%s"}]}]' % ("é" * 17), True),
    ("fewer characters", '"radio":[{"mesh":{"wpa_key":"éééé"}}]', False),
    ("fit together", '"ipv4":"10.0.0.1/255.0.255.0/0.0.0.0"', True),
    ("two spellings", '"radio":[{"wlan":[{"acl":{"mac":["2:0:0:0:0:a","2:0:0:0:0:A"]}}]}]', True),
    ("given twice", '"name":"a","name":"a"', True),
    ("same port", '"poe_port":[{"port":1},{"port":1}]', True),
    ("63 levels", '"name":"a","comment":' + "[" * 62 + "]" * 62, True),
    ("too large", '"name":"a","comment":1e999', True)]


def check(*words, **more):
    return call(ZOV_CHECK, *words, **more)


def shown(row, value):
    if row.form == "rate":
        return str(settings.RATES[value])
    if row.form in ("u32", "u16"):
        return str(value)
    if row.form == "server" and not value:
        return "0.0.0.0"
    if row.form == "macs":
        return ":".join(f"{int(byte, 16):02X}" for byte in value.split(":"))
    if row.form == "digest":
        return hashlib.md5(value.encode() + b"\n").hexdigest()
    is_address = row.form in ("ipv4", "server", "ipset")
    return value.replace(".000", ".0") if is_address else json.dumps(value)


class Check(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.file = self.enterContext(tempfile.TemporaryDirectory()) + "/f.json"

    def test_what_is_reported_of_files(self):
        for text, kind, messages in load_files():
            with self.subTest(text=text[:200]):
                Path(self.file).write_bytes(text)
                expected = ""
                for message in messages:
                    line, mark, what = re.fullmatch(r"(\d*) ?(\*?)(.*)", message).groups()
                    expected += f"{self.file}{line and ':' + line}: ERROR: {what}\n"
                expected = expected.replace("FILE", self.file)
                status, out, err = check("--items", kind, self.file)
                self.assertEqual((status, err), (int(bool(messages)), expected))
                self.assertEqual(check(kind, self.file), (status, "", err))
                sent = run(["cfg", "--mac", "2:0:0:0:0:1", kind, "--file", "f"], b"\0\0",
                           files={"f": text})
                refused = "*" in "".join(messages)
                self.assertEqual((sent.status, sent.received == b"\0"), (int(refused), refused))
                self.assertTrue(not refused or out == "")

    def write(self, text):
        Path(self.file).write_text(text)

    def test_kinds_warnings_and_json(self):
        comment = "02:A2:00:00:00:01, a switch: zov cfg --type 1; its password is not in it"
        self.write(json.dumps({"comment": comment, "wtp_cfg": {"power_budget": 1}}))
        self.assertEqual(check(self.file), (0, "", ""))
        self.assertEqual(check("--type", "0", self.file)[0], 1)
        self.write('{"wtp_cfg":{"comment":"x"}}')
        nothing = "There is no setting in it: nothing is sent."
        self.assertEqual(check(self.file), (0, "", f"{self.file}: WARNING: {nothing}\n"))
        self.assertEqual(check("--strict", self.file), (1, "", f"{self.file}: ERROR: {nothing}\n"))
        wrong = b'{"wtp_cfg":{"radio":[{"op_mode":0},\n{"wlan":[{"vlna":1}]}]}}'
        status, out, err = check("--format", "json", self.file, "-", data=wrong)
        unknown = "Unknown member 'vlna' in 'wtp_cfg.radio[].wlan[]', did you mean 'vlan'?"
        self.assertEqual((status, err, json.loads(out)), (1, "", {"diagnostics": [
            {"file": self.file, "line": None, "severity": "warning", "path": "",
             "message": nothing},
            {"file": "-", "line": 2, "severity": "error", "path": "wtp_cfg.radio[1].wlan[0].vlna",
             "message": unknown}]}))

    def test_very_many_messages(self):
        # On each line but the first a value is out of range and its member given twice.
        self.write('{"wtp_cfg":{' + ",\n".join(['"bandsteer":2'] * 1500) + "}}")
        status, _, err = check(self.file)
        *lines, last = err.splitlines()
        self.assertEqual((status, last), (1, f"{self.file}: and 1999 more"))
        self.assertEqual([int(line.removeprefix(self.file).split(":")[1]) for line in lines],
                         [n // 2 + 1 for n in range(1, 1001)])
        slow = is_sanitized(ZOV_CHECK) or b"__llvm_prf" in Path(ZOV_CHECK).read_bytes()
        size = 10**5 if slow else 10**6
        unknown = ",".join(f'"nam{n}":0' for n in range(size))
        for members, limit in (('"radio":[' + ",".join("0" * size) + "]", 128 << 10),
                               (unknown, 256 << 10)):
            self.write('{"wtp_cfg":{' + members + "}}")
            before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
            status, _, err = check(self.file)
            self.assertEqual((status, err.count("\n")), (1, 1001))
            used = resource.getrusage(resource.RUSAGE_CHILDREN)
            self.assertLess(used.ru_utime - before, 5)
            self.assertTrue(slow or used.ru_maxrss < limit, used.ru_maxrss)

    def test_items_of_every_setting_at_its_bounds(self):
        for kind, rows in TABLE.items():
            for which in (0, 1):
                value = {path: settings.extremes(row)[which] for path, row in rows.items()}
                for path, row in rows.items():
                    value[path] = min(value[path], 65535) if row.form == "u16" else value[path]
                made = settings.document(*value.items())
                self.write(json.dumps(made))
                status, out, err = check("--items", "--type", str(AP - kind), self.file)
                self.assertEqual((status, err), (0, ""))
                lines = [line.split(None, 3) for line in out.splitlines()]
                self.assertEqual([line[:2] for line in lines], [
                    [str(number), ".".join(map(str, key)) or "-"]
                    for number, key, _ in settings.split(settings.Walk(kind).walk(made))])
                self.assertEqual(len({line.index(" wtp_cfg.") for line in out.splitlines()}), 1)
                sent = {path: text for _, _, path, text in lines}
                self.assertEqual(sent, {**{path: shown(rows[path], value[path]) for path in rows},
                                        **{path: "1" for path in sent.keys() - rows.keys()}})

    def test_texts_and_lists_of_items(self):
        self.write(r"""{"wtp_cfg":{"name":"\"\\\n\u001bé","ac_list":["a","b\""],
                        "bandsteering":{"rssi":-70},"radio":[{"comment":1},
                        {"mesh":{"link_robust_threshold":-96},"wlan":[{"acl":{"mac":[]}}]}]}}""")
        rows = r"""
              1  -    wtp_cfg.name                                 "\"\\\u000a\u001bé"
             90  -    wtp_cfg.ac_list[]                            "a","b\""
            103  -    wtp_cfg.bandsteering.rssi                    -70
              4  0    wtp_cfg.radio[]                              2
            114  1    wtp_cfg.radio[].mesh.link_robust_threshold   -96
             17  1.0  wtp_cfg.radio[].wlan[]                       1
             40  1.0  wtp_cfg.radio[].wlan[].acl.mac[]             none""".splitlines()[1:]
        status, out, err = check("--items", self.file)
        self.assertEqual((status, err), (0, ""))
        self.assertEqual([line.split() for line in out.splitlines()], [row.split() for row in rows])

    def test_files(self):
        access_point, switch = (f"{SOURCE}/examples/{name}.json"
                                for name in ("office-ap", "poe-switch"))
        self.assertEqual(check(access_point), (0, "", ""))
        more = ("--acport", "1", "--timeout", "1")
        self.assertEqual(check(switch, "--type", "1", *more), (0, "", ""))
        typed = b'{"wtp_cfg":{"bandsteer":1}}'
        self.assertEqual(check("--items", "nothing", "-", self.file, "/", data=typed), (
            1, f"nothing:\n-:\n50  -  wtp_cfg.bandsteer  1\n{self.file}:\n/:\n",
            f"nothing: ERROR: Open nothing failed.\n{self.file}: ERROR: Open {self.file} failed.\n"
            "/: ERROR: read / failed.\n"))
        self.write('{"wtp_cfg":{"password":"x"}}')
        status, out, err = check("--items", self.file, env={"PATH": "/nothing"})
        self.assertEqual((status, out), (1, ""))
        self.assertRegex(err, f"(?m)^{self.file}:1: ERROR: execute 'md5sum .*' error=32512$")
        self.write('{"wtp_cfg":{"name":"x"}}')
        with open("/dev/full", "w") as full:
            self.assertEqual(check("--items", self.file, stdout=full), (
                1, "", "zov-check: cannot write standard output: No space left on device\n"))

    def test_command_line(self):
        for words, message in (
                ([], "no file to check, see --help"),
                (["--items", "--format", "json", "f"],
                 "--items and --format json exclude each other"),
                (["--type", "2", "f"], "--type: bad argument '2', expected one of: 0 1"),
                (["--itms"], "unknown option '--itms', see --help")):
            self.assertEqual(check(*words), (2, "", f"zov-check: {message}\n"))
        self.write('{"wtp_cfg":{"power_budget":1}}')
        strict = {**os.environ, "POSIXLY_CORRECT": "1"}
        self.assertEqual(check(self.file, "--type", "1", env=strict), (0, "", ""))
        self.assertEqual(check("--type", "1", "--", self.file), (0, "", ""))


@needs(modules=["jsonschema"])
class Schemas(unittest.TestCase):
    def setUp(self):
        from jsonschema import Draft202012Validator
        self.valid = {}
        for kind, name in ((AP, "ap"), (SWITCH, "switch")):
            schema = json.loads(generated(f"wtp_cfg-{name}.schema.json").read_text())
            Draft202012Validator.check_schema(schema)
            self.valid[kind] = Draft202012Validator(schema).is_valid

    def test_agree_with_zov_check(self):
        for kind, cfg in REFUSED + ACCEPTED:
            good, document = (kind, cfg) in ACCEPTED, {"wtp_cfg": cfg}
            status, _, err = check("--type", AP - kind, "-", data=json.dumps(document))
            found = self.valid[kind](document), status, err == ""
            self.assertEqual(found, (good, int(not good), good), cfg)
        for kind, name in ((AP, "office-ap"), (SWITCH, "poe-switch")):
            example = Path(SOURCE, f"examples/{name}.json").read_text()
            self.assertTrue(self.valid[kind](json.loads(example)))

    def test_judge_values_at_their_bounds(self):
        for kind, rows in TABLE.items():
            for path, row in rows.items():
                array, low, high = path.partition("[]")[0], *settings.extremes(row)
                port = [(f"{array}[].port", 1)] if f"{array}[].port" in rows else []
                high = min(high, 65535) if row.form == "u16" else high
                bad = ([row.low - 1, row.high + 1] if row.is_number else
                       ["z" * (row.high + 1)] if row.high else [])
                for value, good in ((low, True), (high, True), *((one, False) for one in bad)):
                    is_valid = self.valid[kind](settings.document(*port, (path, value)))
                    with self.subTest(path=path, value=value):
                        self.assertEqual(is_valid, good)

    def test_differences_are_told(self):
        page = generated("zov-cfg.5").read_text()
        for words, members, passes in DIFFERENCES:
            kind, text = SWITCH if "poe_port" in members else AP, '{"wtp_cfg":{%s}}' % members
            status = check("--type", AP - kind, "-", data=text)[0]
            found = self.valid[kind](json.loads(text)), status
            self.assertEqual((found, words in page), ((passes, int(passes)), True), members)


main()
