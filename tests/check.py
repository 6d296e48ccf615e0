# SPDX-License-Identifier: MIT
"""zov-check on files, good and bad, and the schemas of such files: check.py ZOV_CHECK SOURCE_FOLDER GENERATED"""
import hashlib
import json
import os
import resource
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import settings
from harness import main, needs
from settings import AP, SWITCH, TABLE

ZOV_CHECK, SOURCE, GENERATED = sys.argv[1:4]
DEEP = '{"wtp_cfg":{"comment":' + "[" * 100000 + "]" * 100000 + ',"nam":1}}'

# Text of a file, type, what is reported of it; a number before a message is its line. What zov cfg refuses
# as well is marked by a *, and nothing of such a file would be sent.
FILES = [
    ('{"$schema":"s","comment":{"a":[1]},"wtp_cfg":{"comment":[],"radio":[{"comment":1},{"op_mode":1}]}}', 0, []),
    ('{"$schema":1,"wtp_cfg":{"name":"x"}}', 0, ["1 '$schema' has to be a text."]),
    ("", 0, ["No member 'wtp_cfg', the file is empty."]),
    ("[1]", 0, ["No member 'wtp_cfg'."]),
    ('{\n"WTP_CFG":{"name":"x"},"zzz":{"a":1}}', 0,
     ["No member 'wtp_cfg'.", "2 Unknown member 'WTP_CFG', did you mean 'wtp_cfg'?", "2 Unknown member 'zzz'."]),
    ('{"wtp_cfg":{"nmae":"x","bandsteering":{"rsi":1,"xyz":1},\n"power_budget":1,"coment":1,"$schema":""}}', 0,
     ["1 Unknown member 'nmae' in 'wtp_cfg', did you mean 'name'?",
      "1 Unknown member 'rsi' in 'wtp_cfg.bandsteering', did you mean 'rssi'?",
      "1 Unknown member 'xyz' in 'wtp_cfg.bandsteering'.",
      "2 Unknown member 'power_budget' in 'wtp_cfg', which switches have (--type 1).",
      "2 Unknown member 'coment' in 'wtp_cfg', did you mean 'comment'?",
      "2 Unknown member '$schema' in 'wtp_cfg'."]),
    ('{"wtp_cfg":{"led":{"power":1},"manage_mac_list":["3:0:0:0:0:1"]}}', 1,
     ["1 Unknown member 'led' in 'wtp_cfg', which access points have (--type 0).",
      "1 *Invalid config value '3:0:0:0:0:1' for 'wtp_cfg.manage_mac_list[]'."]),
    ('{"wtp_cfg":\n{"name":"a",\n"led":{"lan":1},"name":"a","led":{"lan":1},\n"comment":1,"comment":2}}', 0,
     ["3 Member 'name' is given twice in 'wtp_cfg'.", "3 Member 'led' is given twice in 'wtp_cfg'."]),
    # Every value is checked, whatever is wrong with others; lists without false doubles.
    ('{"wtp_cfg":{"bandsteer":2,\n"name":1,"location":"a:\\"{[\\\\","dns1":\n"1.2",\n"ac_list":["a",1,"a",2,"a"],\n'
     '"timezone":-721,\n"radio":[{"mesh":{"wpa_key":"seven77"}},\n{"data_rate":"54","wlan":[{"acl":{"mac":'
     '["02:0:0:0:0:1","2:0:0:0:0:1"]}}]}]}}', 0,
     ["1 *config value '2' is out of range (0 to 1) for 'wtp_cfg.bandsteer'.",
      "2 *json config value is not matched for 'wtp_cfg.name'", "3 *Invalid config value '1.2' for 'wtp_cfg.dns1'.",
      *["4 *json config value is not matched for 'wtp_cfg.ac_list[]'"] * 2,
      "5 *config value '-721' is out of range (-720 to 780) for 'wtp_cfg.timezone'.",
      "6 *config string length '7' is out of range (8-63) for 'wtp_cfg.radio[].mesh.wpa_key'.",
      "7 *Invalid config value '54' for 'wtp_cfg.radio[].data_rate'.",
      "7 *Duplicate MACs in 'wtp_cfg.radio[].wlan[].acl.mac[]'."]),
    ('{"wtp_cfg":{"led":1,\n"radio":{"op_mode":1},\n"lan_port":[{"en":1},7,\n[]],"name":["x"],"bandsteer":{"x":1},'
     '"ac_list":"x"}}', 0,
     ["1 'wtp_cfg.led' has to be an object.", "2 'wtp_cfg.radio[]' has to be an array.",
      "3 an element of 'wtp_cfg.lan_port[]' has to be an object.",
      "4 an element of 'wtp_cfg.lan_port[]' has to be an object.", "4 'wtp_cfg.name' has to be a text.",
      "4 'wtp_cfg.bandsteer' has to be a number.", "4 'wtp_cfg.ac_list[]' has to be an array."]),
    ('{"wtp_cfg":{"mesh":{},\n"radio":[{"portal":{"port":65536,"radius_port":65535,"radius_server":"",'
     '"userurl":"a\\u0000b"}},\n{"portal":{"radius_server":"radius"}}],"comment":{}}}', 0,
     ["1 *An object without members.",
      "2 config value '65536' is sent as 0 for 'wtp_cfg.radio[].portal.port'.",
      "2 config value ends at its NUL character for 'wtp_cfg.radio[].portal.userurl'.",
      "3 config value 'radius' is sent as 0.0.0.0 for 'wtp_cfg.radio[].portal.radius_server'.",
      "3 *An object without members."]),
    # What is sent is not what the text shows; no difference of meaning.
    ('{"wtp_cfg":{"radio":[\n{"data_rate":"5.50M"},\n{"data_rate":"MCSx"}],\n"dns1":"1.2.3.4/24","ipv4":'
     '"1.2.3.4/255.0.0.0/1.2.3.1x",\n"guest_network":{"addr":"10.0.0.2.5"}}}', 0,
     ["2 config value '5.50M' is sent as 10M for 'wtp_cfg.radio[].data_rate'.",
      "3 config value 'MCSx' is sent as MCS0 for 'wtp_cfg.radio[].data_rate'.",
      "4 config value '1.2.3.4/24' is sent as 1.2.3.4 for 'wtp_cfg.dns1'.",
      "4 config value '1.2.3.4/255.0.0.0/1.2.3.1x' is sent as 1.2.3.4/255.0.0.0/1.2.3.1 for 'wtp_cfg.ipv4'.",
      "5 config value '10.0.0.2.5' is sent as 10.0.0.2 for 'wtp_cfg.guest_network.addr'."]),
    *(('{"wtp_cfg":{"radio":[{"data_rate":"%s"}]}}' % rate, 0,
       [f"1 config value '{rate}' is sent as {sent} for 'wtp_cfg.radio[].data_rate'."]) for rate, sent in (
           ("1.25M", "3.5M"), ("MCS7.0", "MCS7"), ("MCS-8", "-7"),
           ("MCS99", "VHTMCS-1"), ("-1M", "-1000"), ("1..5M", "1M"), ("6.05M", "6.5M"))),
    ('{"wtp_cfg":{"manage_mac_list":["02:0:0:0:0:1x","2:a:0:0:0:1"],"dns1":"010.1.001.0"}}', 1,
     ["1 config value '02:0:0:0:0:1x' is sent as 02:00:00:00:00:01 for 'wtp_cfg.manage_mac_list[]'."]),
    *(('{"wtp_cfg":{"radio":[{"data_rate":"%s"}]}}' % rate, 0, []) for rate in ("54.0M", "05.5M", "MCS07", "32M")),
    # JSON that only zov's parser takes.
    *((f'{{"wtp_cfg":{{\n{members}', 0, [f"{line} This is no JSON as RFC 8259 has it: {why}."]) for members, line, why in (
        ('"name":"x",}}', 2, "unexpected '}'; expected string literal"),
        ('"name":"my\\pass1word"}}', 2, "invalid string: forbidden character after backslash"),
        ('"name":"a\nb"}}', 2, "invalid string: control character U+000A (LF) must be escaped to \\u000A or \\n"),
        ('"name":"\xff"}}', 2, "invalid string: ill-formed UTF-8 byte"), ('"name":"x"}}\n\0{}', 3, "a NUL byte"))),
    ('\xef\xbb\xbf{"wtp_cfg":{"name":"x"}}', 0, ["1 This is no JSON as RFC 8259 has it: a byte order mark."]),
    ('{"wtp_cfg":{"name":"x",\n"comment":1e999}}', 0, ["2 Most programs cannot read a number: it is out of range."]),
    # Members whose names are paths are sent; a comment keeps the place of a key.
    ('{"wtp_cfg":{"led.power":1}}', 0, ["1 Member 'led.power' in 'wtp_cfg' is sent as wtp_cfg.led.power, though it is "
                                        "no member of that object."]),
    ('{"wtp_cfg":{"radio":[{"wlan":[{"wep":{"key":[{"comment":"none"},"abcde"]}}]}]}}', 0, []),
    # Elements that no device has, or that name no port of their own.
    ('{"wtp_cfg":{"radio":[],"lan_port":[],\n"radio":[{"wlan":[{"wep":{"key":["a","b","c","d",\n"e"]}}]}]}}', 0,
     ["1 'wtp_cfg.radio[]' is empty, which no device can be.",
      "1 'wtp_cfg.lan_port[]' is empty, which no device can be.",
      "2 Member 'radio' is given twice in 'wtp_cfg'.",
      "2 'wtp_cfg.radio[].wlan[].wep.key[]' has 5 elements, 4 at most can be kept."]),
    ('{"wtp_cfg":{"poe_port":[],"switch_port":[{"mode":1},{"comment":1},\n{"port":3},{"port":3}],'
     '"pdl_status":[],"pd_lifeguard":[]}}', 1,
     ["1 'wtp_cfg.poe_port[]' is empty, which no device can be.",
      "1 an element of 'wtp_cfg.switch_port[]' has no 'port'.",
      "2 an element of 'wtp_cfg.switch_port[]' has the port of one before it, 3."]),
    # Nothing that a terminal would obey.
    ('{"wtp_cfg":{"\\u001b]0;x\\u0007":1,"dns1":"\\u009b1m\x7f\\u202e\xe2\x82"}}', 0,
     ["1 This is no JSON as RFC 8259 has it: invalid string: ill-formed UTF-8 byte.",
      "1 Unknown member '?]0;x?' in 'wtp_cfg'.", "1 *Invalid config value '?1m????' for 'wtp_cfg.dns1'."]),
    ('{"wtp_cfg":{"\\u061c\\u200a\\u200b\\u200c\\u200d\\u200e\\ufeff":1}}', 0,
     ["1 Unknown member '?\u200a?????' in 'wtp_cfg'."]),
    ('{"wtp_cfg":{"name":"x"\n,,}', 0, ["2 *Invalid config file FILE. Unexpected `,` in object."]),
    ('{"a":1,\n"b', 0, ["2 *Invalid config file FILE. Unexpected EOF in string."]),
    (DEEP, 0, ["1 *json iter stack is full.", "1 Unknown member 'nam' in 'wtp_cfg', did you mean 'name'?"]),
]


# What schemas and zov-check refuse, beyond single values, and what is good all the same.
REFUSED = [
    (AP, {}), (AP, {"radio": {"tx_power": 17}}), (AP, {"radio": [{}]}), (AP, {"led": [{"power": 1}]}),
    (AP, {"ac_list": [f"ac{n}.example" for n in range(256)]}), (SWITCH, {"switch_port": [{"port": 1}] * 257}),
    (AP, {"ac_list": ["a", "a"]}), (AP, {"radio": [{"wlan": [{"l2macWlist": ["0:0:5e:0:53:1"] * 2}]}]}),
    (AP, {"radio": [{"wlan": [{"acl": {"mac": ["01:00:5e:00:00:01"]}}]}]}), (SWITCH, {"manage_mac_list": ["2:0:0:0:1"]}),
    *((AP, {"radio": [{"data_rate": rate}]}) for rate in ("5.05M", "0M", "0.1M", "0.20M")),
    (AP, {"name": "x", "comment": {}}), (AP, {"name": "x", "comment": [1, {"a": [{}]}]}),
    (AP, {"radio": [{"txpower": 17}]}), (SWITCH, {"bandsteer": 1}), (SWITCH, {"power_budget": {"comment": 1}})]
ACCEPTED = [
    (AP, {"comment": ["red"], "radio": [{"comment": {"tx_power": "x"}}, {"mesh": {"comment": 1}}]}),
    (SWITCH, {"ac_list": [], "manage_mac_list": []}), (SWITCH, {"ac_list": ["a", "a"]}),
    (AP, {"ac_list": [f"ac{n}.example" for n in range(255)]}), (AP, {"ipv4": "0.0.0.0/0.0.0.0/0.0.0.0"}),
    (AP, {"radio": [{"wlan": [{"wep": {"key": [{"comment": "none"}, "abcde"]}}]}]}),
    *((AP, {"radio": [{"data_rate": rate}]}) for rate in ("0.2M", "000.2M", "999999M"))]


def check(*words, **more):
    done = subprocess.run([ZOV_CHECK, *words], capture_output=True, timeout=60, **more)
    return done.returncode, done.stdout.decode(), done.stderr.decode()


def shown(row, value):
    """How --items shows a value."""
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
    return value.replace(".000", ".0") if row.form in ("ipv4", "server", "ipset") else json.dumps(value)


class Check(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.file = f"{folder.name}/f.json"

    def test_what_is_reported(self):
        for text, kind, messages in FILES:
            with self.subTest(text=text[:200]):
                Path(self.file).write_text(text, encoding="latin-1")
                number = [m.split(" ")[0] if m[0].isdigit() else "" for m in messages]
                expected = "".join(
                    f"{self.file}{n and ':' + n}: ERROR: {m.removeprefix(n).lstrip(' ').removeprefix('*')}\n"
                    for n, m in zip(number, messages)).replace("FILE", self.file)
                status, out, err = check("--items", "--type", str(kind), self.file)
                self.assertEqual((status, err), (int(bool(messages)), expected))
                if any("*" in m for m in messages):
                    self.assertEqual(out, "")
                self.assertEqual(check("--type", str(kind), self.file), (status, "", err))

    def test_kinds_warnings_and_json(self):
        exported = '{"comment":"02:A2:00:00:00:01, a switch: zov cfg --type 1; its password is not in it","wtp_cfg":{"power_budget":1}}'
        Path(self.file).write_text(exported)
        self.assertEqual(check(self.file), (0, "", ""))
        self.assertEqual(check("--type", "0", self.file)[0], 1)
        Path(self.file).write_text('{"wtp_cfg":{"comment":"x"}}')
        nothing = "There is no setting in it: nothing is sent."
        self.assertEqual(check(self.file), (0, "", f"{self.file}: WARNING: {nothing}\n"))
        self.assertEqual(check("--strict", self.file), (1, "", f"{self.file}: ERROR: {nothing}\n"))
        wrong = b'{"wtp_cfg":{"radio":[{"op_mode":0},\n{"wlan":[{"vlna":1}]}]}}'
        status, out, err = check("--format", "json", self.file, "-", input=wrong)
        self.assertEqual((status, err, json.loads(out)), (1, "", {"diagnostics": [
            {"file": self.file, "line": None, "severity": "warning", "path": "", "message": nothing},
            {"file": "-", "line": 2, "severity": "error", "path": "wtp_cfg.radio[1].wlan[0].vlna", "message":
             "Unknown member 'vlna' in 'wtp_cfg.radio[].wlan[]', did you mean 'vlan'?"}]}))

    def test_very_many_messages(self):
        # On each line but the first a value is out of range and its member given twice.
        text = '{"wtp_cfg":{' + ",\n".join(['"bandsteer":2'] * 1500) + "}}"
        Path(self.file).write_text(text)
        status, _, err = check(self.file)
        *lines, last = err.splitlines()
        self.assertEqual((status, last), (1, f"{self.file}: and 1999 more"))
        self.assertEqual([int(line.removeprefix(self.file).split(":")[1]) for line in lines],
                         [n // 2 + 1 for n in range(1, 1001)])
        slow = b"__asan_init" in Path(ZOV_CHECK).read_bytes()
        size = 10**5 if slow else 10**6
        for text, limit in (('{"wtp_cfg":{"radio":[' + ",".join("0" * size) + "]}}", 128 << 10),
                            ('{"wtp_cfg":{' + ",".join(f'"nam{n}":0' for n in range(size)) + "}}", 256 << 10)):
            Path(self.file).write_text(text)
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
                value |= {path: min(value[path], 65535) for path, row in rows.items() if row.form == "u16"}
                made = settings.document(*value.items())
                Path(self.file).write_text(json.dumps(made))
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
        Path(self.file).write_text(
            '{"wtp_cfg":{"name":"\\"\\\\\\n\\u001b\u00e9","ac_list":["a","b\\""],"bandsteering":{"rssi":-70},'
            '"radio":[{"comment":1},{"mesh":{"link_robust_threshold":-96},"wlan":[{"acl":{"mac":[]}}]}]}}')
        rows = (r'''  1  -    wtp_cfg.name                                 "\"\\\u000a\u001bé"''',
                r'''90  -    wtp_cfg.ac_list[]                            "a","b\""''',
                "103  -    wtp_cfg.bandsteering.rssi                    -70",
                "  4  0    wtp_cfg.radio[]                              2",
                "114  1    wtp_cfg.radio[].mesh.link_robust_threshold   -96",
                " 17  1.0  wtp_cfg.radio[].wlan[]                       1",
                " 40  1.0  wtp_cfg.radio[].wlan[].acl.mac[]             none")
        status, out, err = check("--items", self.file)
        self.assertEqual((status, err), (0, ""))
        self.assertEqual([line.split() for line in out.splitlines()], [row.split() for row in rows])

    def test_files(self):
        examples = [f"{SOURCE}/examples/{name}.json" for name in ("office-ap", "poe-switch")]
        self.assertEqual(check(examples[0]), (0, "", ""))
        self.assertEqual(check(examples[1], "--type", "1", "--acport", "1", "--timeout", "1"), (0, "", ""))
        status, out, err = check("--items", "nothing", "-", self.file, "/", input=b'{"wtp_cfg":{"bandsteer":1}}')
        self.assertEqual((status, out), (1, f"nothing:\n-:\n50  -  wtp_cfg.bandsteer  1\n{self.file}:\n/:\n"))
        self.assertEqual(err, "nothing: ERROR: Open nothing failed.\n"
                              f"{self.file}: ERROR: Open {self.file} failed.\n/: ERROR: read / failed.\n")
        Path(self.file).write_text('{"wtp_cfg":{"password":"x"}}')
        status, out, err = check("--items", self.file, env={"PATH": "/nothing"})
        self.assertEqual((status, out), (1, ""))
        self.assertRegex(err, f"(?m)^{self.file}:1: ERROR: execute 'md5sum .*' error=32512$")
        Path(self.file).write_text('{"wtp_cfg":{"name":"x"}}')
        with open("/dev/full", "w") as full:
            done = subprocess.run([ZOV_CHECK, "--items", self.file], stdout=full, stderr=subprocess.PIPE, text=True)
        self.assertEqual((done.returncode, done.stderr),
                         (1, "zov-check: cannot write standard output: No space left on device\n"))

    def test_command_line(self):
        for words, message in (([], "no file to check, see --help"), (["--type", "2", "f"], "--type: bad argument '2', "
                               "expected one of: 0 1"), (["--itms"], "unknown option '--itms', see --help")):
            self.assertEqual(check(*words), (2, "", f"zov-check: {message}\n"))
        Path(self.file).write_text('{"wtp_cfg":{"power_budget":1}}')
        self.assertEqual(check(self.file, "--type", "1", env={**os.environ, "POSIXLY_CORRECT": "1"}), (0, "", ""))
        self.assertEqual(check("--type", "1", "--", self.file), (0, "", ""))
        status, out, err = check("--help")
        self.assertEqual((status, err), (0, ""))
        self.assertRegex(out, r"^usage: zov-check \[OPTION\]\.\.\. FILE\.\.\.\n(.*\n)+  --type TYPE .*(\n.*)+--timeout SEC")


@needs(modules=["jsonschema"])
class Schemas(unittest.TestCase):
    def setUp(self):
        from jsonschema import Draft202012Validator
        self.valid = {}
        for kind, name in ((AP, "ap"), (SWITCH, "switch")):
            schema = json.loads(Path(GENERATED, f"wtp_cfg-{name}.schema.json").read_text())
            Draft202012Validator.check_schema(schema)
            self.valid[kind] = Draft202012Validator(schema).is_valid

    def test_agree_with_zov_check(self):
        for kind, cfg in REFUSED + ACCEPTED:
            good, document = (kind, cfg) in ACCEPTED, {"wtp_cfg": cfg}
            status, _, err = check("--type", str(AP - kind), "-", input=json.dumps(document).encode())
            self.assertEqual((self.valid[kind](document), status, err == ""), (good, int(not good), good), cfg)
        for kind, name in ((AP, "office-ap"), (SWITCH, "poe-switch")):
            self.assertTrue(self.valid[kind](json.loads(Path(f"{SOURCE}/examples/{name}.json").read_text())))


if __name__ == "__main__":
    main()
