# SPDX-License-Identifier: MIT
"""Configuration files through zov cfg: every setting of settings.txt at its bounds and beyond,
random documents, lists, index bytes, nesting. What has to be sent is worked out by a walk of this
file's own.

The first argument is the program; ZOV_LONG=1 asks for more documents.
"""
import hashlib
import json
import os
import random
import re
import struct
from pathlib import Path
from typing import NamedTuple

from harness import Case, main, run

SWITCH, AP = 2, 3
COUNTS = {"wtp_cfg.radio[]": 4, "wtp_cfg.radio[].wlan[]": 17, "wtp_cfg.lan_port[]": 93,
          "wtp_cfg.switch_port[]": 8, "wtp_cfg.poe_port[]": 13, "wtp_cfg.pd_lifeguard[]": 24,
          "wtp_cfg.pdl_status[]": 38}
EMPTY_LISTS = {"wtp_cfg.manage_mac_list[]": {SWITCH: 20}, "wtp_cfg.ac_list[]": {SWITCH: 19, AP: 90},
               "wtp_cfg.radio[].wlan[].acl.mac[]": {SWITCH: 40, AP: 40},
               "wtp_cfg.radio[].wlan[].l2macWlist[]": {SWITCH: 161, AP: 161}}
RATES = {"auto": 0, "MCS0": 1, "MCS7": 8, "MCS31": 32, "VHTMCS0": 101, "VHTMCS9": 110, "1M": 1000,
         "5.5M": 5500, "11M": 11000, "6M.5": 6500, "1.25M": 3500, "-1M": -1000, "xMCS4": 5,
         "MCSx": 1, "999999M": 999999000, "M.": 0}
REPORTED_RATES = ["auto", "MCS7", "MCS31", "VHTMCS9", "5.5M", "11M"]
LISTS = ("macs", "hosts")
DEVICE, DEVICE_BYTES = "00:11:22:33:44:55", bytes.fromhex("001122334455")


class Setting(NamedTuple):
    """A row of the table; high is None without an upper bound."""
    id: int
    path: str
    form: str
    low: int
    high: int | None

    @property
    def is_number(self):
        """Whether JSON has it as a number; all others are texts, with bounds of their lengths."""
        return self.form in ("u32", "u16")


def load():
    """The settings of both kinds of devices: kind -> path -> row."""
    table = {SWITCH: {}, AP: {}}
    for line in Path(__file__).with_name("settings.txt").read_text().splitlines():
        if line.startswith("["):
            kind, group = line[1:-1].split()
        elif not line.startswith("#"):
            for entry in line.split(" | "):
                number, name, form, bounds = entry.split()
                low, high = (int(bound) if bound else None for bound in bounds.split(".."))
                row = Setting(int(number), f"{group}.{name}", form, low, high)
                table[{"switch": SWITCH, "ap": AP}[kind]][row.path] = row
    return table


TABLE = load()


def program_paths(kind):
    """The paths of the program's own table."""
    rows = Path(__file__).parents[1].joinpath("src/config/settings.def").read_text()
    name = {SWITCH: "SWITCH", AP: "AP"}[kind]
    return set(re.findall(rf'^{name}\(\d+, \w+, -?\d+, -?\d+,\s+"([^"]+)"', rows, re.M))


def quads(text):
    return bytes(int(part) for part in text.replace("/", ".").split("."))


def encoded(row, value):
    """The wire form of a value that is good."""
    if row.is_number:
        return (value % 2 ** 32).to_bytes(4, "big")[0 if row.form == "u32" else 2:]
    if row.form == "digest":
        return hashlib.md5(value.encode() + b"\n").digest()
    if row.form == "rate":
        return struct.pack(">i", RATES[value])
    if row.form in ("ipv4", "ipset") or row.form == "server" and value.count(".") == 3:
        return quads(value)
    return bytes(4) if row.form == "server" else value.encode().split(b"\0")[0]


class Walk:
    """Turns a document into items. `positions` keeps, for each level, what was there before."""

    def __init__(self, kind):
        self.kind, self.items, self.positions = kind, b"", [0] * 64

    def item(self, number, key, value):
        self.items += struct.pack(">HH", number, len(key)) + key
        self.items += struct.pack(">H", len(value)) + value

    def walk(self, value, path="", arrays=(), depth=0, above=None):
        """Walks a value in these arrays (their levels); above: the value that holds it."""
        def key():
            return bytes(self.positions[level] for level in arrays)
        if isinstance(value, dict):
            for self.positions[depth], (name, member) in enumerate(value.items()):
                below = f"{path}.{name}" if depth else name
                self.walk(member, below, arrays, depth + 1, value)
        elif isinstance(value, list):
            path, arrays = f"{path}[]", (*arrays, depth)
            if path in COUNTS:
                self.item(COUNTS[path], key(), struct.pack(">I", len(value)))
            elif path in EMPTY_LISTS and not value:
                self.item(EMPTY_LISTS[path][self.kind], key()[:-1], b"")
            for self.positions[depth], element in enumerate(value):
                self.walk(element, path, arrays, depth + 1, value)
        elif row := TABLE[self.kind].get(path):
            if row.form not in LISTS:
                self.item(row.id, key(), encoded(row, value))
            elif self.positions[depth - 1] == len(above) - 1:
                packed = (bytes(int(part, 16) for part in text.split(":")) if row.form == "macs"
                          else text.encode().split(b"\0")[0].ljust(256, b"\0") for text in above)
                self.item(row.id, key()[:-1], b"".join(packed))
        return self.items


def split(items):
    while items:
        number, length = struct.unpack_from(">HH", items)
        end = 6 + length + struct.unpack_from(">H", items, 4 + length)[0]
        yield number, items[4:4 + length], items[6 + length:end]
        items = items[end:]


def document(*pairs, before=0):
    """A document with these (path, value); `before`: elements before the one with the value."""
    root = {}
    for path, value in pairs:
        node, (*groups, name) = root, path.split(".")
        for group in groups:
            is_array = group.endswith("[]")
            new = [{"-": 0}] * before + [{}] if is_array else {}
            node = node.setdefault(group.removesuffix("[]"), new)
            node = node[-1] if is_array else node
        is_element = name.endswith("[]") and not isinstance(value, list)
        node[name.removesuffix("[]")] = [value] if is_element else value
    return root


def extremes(row):
    """The smallest and the largest value that a setting takes."""
    texts = {"ipv4": ("1.2.3.4", "255.255.255.255"), "server": ("", "255.255.255.255"),
             "ipset": ("0.0.0.0/0.0.0.0/0.0.0.0",
                       "123.124.125.126/255.255.255.000/123.124.125.130"),
             "macs": ("2:0:0:0:0:1", "FE:ff:fF:ff:ff:ff"), "rate": ("1M", "VHTMCS9")}
    if row.is_number:
        return row.low, row.high
    longest = 1000 if row.high is None else row.high
    return texts.get(row.form, ("x" * row.low, "y" * longest))


def words(kind):
    return ["cfg", "--mac", DEVICE, "--type", str(AP - kind), "--file", "f"]


def script(kind, items):
    request = b"\0\1" + DEVICE_BYTES + bytes([kind, 0, 0, 0, 0, 0]) + items + b"\0\0"
    return [(">", struct.pack(">BI", 5, len(request)) + request), ("<", b"\0\0")]


class Settings(Case):
    def cfg(self, kind, content, steps=()):
        """One run with a file of this content, which is a document or its text."""
        text = content if isinstance(content, str) else json.dumps(content, ensure_ascii=False)
        return run(words(kind), steps, files={"f": text.encode()})

    def takes(self, kind, content, items=None):
        """The file is sent, as these items or as those that the walk finds."""
        items = Walk(kind).walk(content) if items is None else items
        with self.subTest(content=str(content)[:300], kind=kind):
            self.expect(self.cfg(kind, content, script(kind, items)))

    def refuses(self, kind, content, message):
        """The file is refused with this message, or in silence, and nothing is sent."""
        with self.subTest(content=str(content)[:300], kind=kind):
            err = f"ERROR: {message}\n".encode() if message else b""
            self.expect(self.cfg(kind, content), err=err, status=1)

    def test_every_setting_at_its_bounds(self):
        for kind, rows in TABLE.items():
            self.assertEqual(set(rows), program_paths(kind))
            for which in (0, 1):
                pairs = [(path, extremes(row)[which]) for path, row in rows.items()]
                self.takes(kind, document(*pairs, before=2 * which))

    def test_every_setting_beyond_its_bounds(self):
        bad_texts = {"ipv4": ["", "1.2.3", "1.2.3.256"], "ipset": ["9.9.9.9/255.255.255.0/1"],
                     "rate": ["54", "mcs7", "Auto", "11m"],
                     "macs": ["", "3:0:0:0:0:1", "0:0:0:0:0:0", "2:0:0:0:0:100"]}
        for turn, (kind, row) in enumerate((kind, row) for kind, rows in TABLE.items()
                                           for row in rows.values()):
            if row.is_number:
                far = (2 ** 32 + row.low, 1 - 2 ** 63, 2 ** 63 - 1, row.low - 2 ** 32)[turn % 4]
                values, wrong = [row.low - 1, row.high + 1, far], [str(row.low), True, 0.5, None]
                message = "config value '{}' is out of range ({} to {}) for '{}'."
            else:
                values = ["z" * n for n in (row.low - 1, (row.high or -2) + 1) if n >= 0]
                values += ["\u00e9" * (row.high // 2 + 1)] if row.high else []  # of two bytes each
                wrong = [1, False, 1e2, None]
                message = "config string length '{}' is out of range ({}-{}) for '{}'."
            cases = [(value, message.format(value if row.is_number else len(value.encode()),
                                            row.low, row.high, row.path)) for value in values]
            cases += [(value, f"json config value is not matched for '{row.path}'")
                      for value in (wrong[0], wrong[1 + turn % 3])]
            cases += [(value, f"Invalid config value '{value}' for '{row.path}'.")
                      for value in bad_texts.get(row.form, [])]
            for value, refusal in cases:
                self.refuses(kind, document((row.path, value)), refusal)

    def test_random_documents(self):
        for seed in range(400 if os.environ.get("ZOV_LONG") else 40):
            kind = (SWITCH, AP)[seed % 2]
            self.takes(kind, {"noise": [seed], "wtp_cfg": Documents(seed, kind).group()})

    def test_forms_of_values(self):
        for rate in RATES:
            self.takes(AP, document(("wtp_cfg.radio[].data_rate", rate)))
        for password in ("secret", "it's; `rm` $(x) \"q\" \\n %s", "-n", "caf\u00e9", "y" * 200):
            self.takes(AP, document(("wtp_cfg.password", password)))
        # One radio, its one WLAN, the server.
        counts = "0004 0001 00 0004 00000001 0011 0002 0000 0004 00000001 007d 0002 0000 0004"
        for server, sent in (("", "00000000"), ("none", "00000000"), ("1.2.3", "00000000"),
                             ("1.2.3.256", "00000000"), ("10.1.2.3x", "0a010203")):
            self.takes(AP, document(("wtp_cfg.radio[].wlan[].portal.radius_server", server)),
                       bytes.fromhex(counts + sent))
        portal = "wtp_cfg.radio[].portal."
        self.takes(AP, document((portal + "radius_port", 70000), (portal + "port", 65536)))
        for address, sent in (("8.8.4.4x", b"\x08\x08\4\4"), ("008.8.8.8 9", b"\x08" * 4)):
            self.takes(SWITCH, document(("wtp_cfg.dns2", address)), b"\0\5\0\0\0\4" + sent)
        self.takes(AP, document(("wtp_cfg.name", "a\0b"), ("wtp_cfg.location", "\0")))
        self.takes(AP, '{"wtp_cfg":{"name":"\\u00e9\\"\\/","name":"again"}}',
                   b"\0\1\0\0\0\4\xc3\xa9\"/" + b"\0\1\0\0\0\5again")

    def test_address_settings(self):
        good = """
            192.168.1.10/255.255.255.0/192.168.1.1 10.0.0.1/255.0.0.0/0.0.0.0
            0.0.0.0/0.0.0.0/0.0.0.0 191.254.0.1/255.255.0.0/191.254.255.254
            192.168.1.9/255.255.255.252/192.168.1.10 223.1.1.1/255.255.0.0/0.0.0.0
            240.0.0.1/255.0.0.0/240.0.0.2 1.0.0.1/128.0.0.0/126.0.0.1
            126.9.9.9/255.255.254.0/126.9.8.1 190.255.0.1/255.255.0.0/0.0.0.0
            1.0.0.1/128.0.0.0/0.0.0.9""".split()
        bad = ["10.0.0.1 /255.0.0.0/10.0.0.2", *"""
            192.168.1.10/255.0.255.0/192.168.1.1 10.0.0.1/255.255.160.0/0.0.0.0
            1.2.3.4/24/1.2.3.1/1.2.3.4 192.168.1.0/255.255.255.0/0.0.0.0
            192.168.1.255/255.255.255.0/0.0.0.0 192.168.1.10/255.255.255.0/192.168.2.1
            10.0.0.1/255.0.0.0/11.0.0.1 10.0.0.256/255.0.0.0/0.0.0.0 127.0.0.5/255.0.0.0/0.0.0.0
            224.0.0.1/255.0.0.0/0.0.0.0 239.9.9.9/255.0.0.0/0.0.0.0
            191.255.1.1/255.255.0.0/0.0.0.0 255.0.0.5/255.0.0.0/0.0.0.0
            0.0.0.5/255.255.255.0/0.0.0.0 255.255.255.255/255.0.0.0/0.0.0.0
            10.0.0.1/255.255.255.255/0.0.0.0 10.0.0.1/0.0.0.0/0.0.0.0/9.9
            10.0.0.1/255.255.255.254/0.0.0.0 0.0.0.0/0.0.0.0/10.0.0.1
            10.0.0.1/255.0.0.0/255.255.255.255 10.0.0.1/255.0.0.0/10.0.0.0
            10.0.0.1/255.0.0.0/10.255.255.255 1.0.0.1/128.0.0.0/127.0.0.1
            200.0.0.1/192.0.0.0/224.0.0.1 190.0.0.1/192.0.0.0/191.255.0.1
            0.0.0.0/255.0.0.0/0.0.0.0 200.0.0.1/128.0.0.0/239.0.0.1
            10.0.0.1/127.255.255.0/0.0.0.0 10.0.0.1/255.255.255.1/0.0.0.0
            10.0.4.1/255.255.252.0/10.0.8.1 254.0.0.1/254.0.0.0/255.0.0.1
            192.168.1.10/255.255.255.0/192.168.1.255 0.9.0.0/0.0.0.0/0.0.0.0
            0.0.9.0/0.0.0.0/0.0.0.0 0.0.0.0/0.0.0.0/0.9.0.0""".split()]
        for kind in TABLE:
            for text in (*good, good[0] + "9x/"):
                sent = quads(text.removesuffix("x/"))
                self.takes(kind, document(("wtp_cfg.ipv4", text)), b"\0\3\0\0\0\x0c" + sent)
            for text in bad:
                self.refuses(kind, document(("wtp_cfg.ipv4", text)),
                             f"Invalid config value '{text}' for 'wtp_cfg.ipv4'.")
        # The same rules hold for --ip, which knows name servers too, and may end early.
        servers = "9.0.0.0 9.0.0.255 127.0.0.1 255.255.255.255 224.0.0.1 191.255.0.1 1.1".split()
        bad += [f"{good[0]}/{first}{server}" for server in servers
                for first in ("", "8.8.8.8/", "0.0.0.0/")]
        bad += ["9.0.0.1", "0.0.0", "9.0.0.1/255.255.255", "9.0.0.1/255.0.0.0/1",
                "0.0.0.0/" * 4 + "9.9.9.9"]
        good += [good[0] + "/9.9.9.9", good[0] + "/0.0.0.0/8.0.0.1", good[1][:18]]
        for text in good:
            with self.subTest(text=text):
                item = struct.pack(">HHHH", 26, 3, 0, 20) + quads(text).ljust(20, b"\0")
                steps = [(">", b"\3" + DEVICE_BYTES + item), ("<", b"\0")]
                self.expect(run(["cfg", "--mac", DEVICE, "--add", "--ip", text], steps))
        for text in bad:
            with self.subTest(text=text):
                self.expect(run(["cfg", "--mac", DEVICE, "--ip", text]),
                            err=f"ERROR: Invalid --ip argument '{text}'.\n".encode())

    def test_lists(self):
        lists = [(kind, path, row.form == "macs") for kind, rows in TABLE.items()
                 for path, row in rows.items() if row.form in LISTS]
        self.assertEqual(len(lists), 5)
        for kind, path, is_macs in lists:
            made = [f"2:0:0:0:{n >> 8:x}:{n & 255:x}" if is_macs else f"h{n}" for n in range(257)]
            most = 256 if is_macs else 255
            for few in ([], made[:1], made[:3], made[:most]):
                self.takes(kind, document((path, few), before=1))
            for many in (most + 1, 65537):
                too_long = f"config array of {many} elements is too long ({most} at most)"
                many_texts = (made * 256)[:many]
                self.refuses(kind, document((path, many_texts)), f"{too_long} for '{path}'.")
            doubles = made[:2] + [made[0].upper()] if is_macs else ["", "x", "X", ""]
            if is_macs:
                self.refuses(kind, document((path, doubles)), f"Duplicate MACs in '{path}'.")
                self.refuses(kind, document((path, doubles + ["3::"])),
                             f"Invalid config value '3::' for '{path}'.")
            elif kind == AP:
                self.refuses(kind, document((path, doubles)), f"Duplicate hostname in '{path}'.")
                self.refuses(kind, document((path, doubles + [1])),
                             f"json config value is not matched for '{path}'")
            else:
                self.takes(kind, document((path, doubles)))
            # A list whose last element is no text makes no item.
            self.takes(kind, document((path, made[:2] + [{"x": 1}]), ("wtp_cfg.name", "n")))
        self.refuses(AP, document(("wtp_cfg.manage_mac_list[]", [])), "Only support Switch device")
        self.takes(AP, document(("wtp_cfg.manage_mac_list[]", ["no", 1])), b"")

    def test_sizes_of_arrays(self):
        for kind, rows in TABLE.items():
            arrays = {path[:found.end()] for path in rows for found in re.finditer(r"\[\]", path)}
            arrays -= {path for path, row in rows.items() if row.form in LISTS}
            too_long = "config array of 257 elements is too long (256 at most)"
            for path in arrays:
                self.takes(kind, document((path, [{"x": 1}] * 256)))
                self.refuses(kind, document((path, [{"x": 1}] * 257)), f"{too_long} for '{path}'.")
        self.takes(AP, document(("wtp_cfg.radio[]", [{"op_mode": n % 3} for n in range(256)])))
        self.takes(AP, document(("wtp_cfg.colour[]", [1] * 300)))
        hotspot = "wtp_cfg.radio[].wlan[].hotspot20"
        self.takes(AP, document((hotspot, "n" * 65535)))
        self.refuses(AP, document((hotspot, "n" * 65536)),
                     f"config value of 65536 bytes is too long (65535 at most) for '{hotspot}'.")

    def test_what_is_no_setting(self):
        members = {"colour": "red", "Name": 1, "name ": [True], "name": {"x": None}}
        for value in (members, [1, {"x": 1}], "x"):
            for kind in TABLE:
                self.takes(kind, {"wtp_cfg": value}, b"")
        for text in ("[]", '[[],["wtp_cfg"],{"wtp_cfg":1}]', '{"version":[1,2]}', "3", '"wtp_cfg"',
                     "null", "", '{"name":"x"}'):
            self.takes(AP, text, b"")
        long = {"n" * 247: 1, "m" * 248: [2, {"x": [2]}], "k" * 243: {"a": [2]}, "name": "n"}
        self.takes(AP, {"x" * 300: {"x": 1}, "wtp_cfg": long}, b"\0\1\0\0\0\1n")
        for text in ("{}", '{"wtp_cfg":{}}', '{"wtp_cfg":{"%s":{}}}' % ("n" * 248),
                     '{"wtp_cfg":{"name":"a"},"notes":[{"x":{}}]}'):
            self.refuses(AP, text, "")
        for text in ('{"wtp_cfg":{"name":"a"}', "wtp_cfg.name=a", "{'a':1}", '{"a":1}x',
                     '{"a":1 /**/}', " "):
            self.refuses(AP, text, "Invalid config file f.")
        # A member named like a list's element is in no list.
        self.refuses(AP, '{"wtp_cfg":{"ac_list":["a",{"x":1}],"ac_list[]":"x"}}',
                     "Invalid config value 'x' for 'wtp_cfg.ac_list[]'.")

    def test_nesting(self):
        for levels in range(61, 66):
            objects = levels - 1
            for text in ("[" * levels + "]" * levels, '{"a":' * objects + "1" + "}" * objects):
                if levels <= 63:
                    self.takes(AP, text, b"")
                else:
                    self.refuses(AP, text, "json iter stack is full.")


class Documents:
    """Makes random documents of good settings. With `rows`, the elements of each array by its path
    (3 of others), they hold every setting, and what a report can show as it was sent; else some,
    with members that are none and arrays of any length."""

    def __init__(self, seed, kind, rows=None):
        self.random, self.kind, self.rows = random.Random(seed), kind, rows
        self.paths = TABLE[kind] if rows else {**TABLE[SWITCH], **TABLE[AP], **TABLE[kind]}

    def value(self, row):
        chance, whole = self.random, self.rows
        if row.is_number:
            is_short = whole and row.form == "u16"
            return chance.randint(row.low, min(row.high, 65535) if is_short else row.high)
        if row.form == "rate":
            return chance.choice(REPORTED_RATES if whole else list(RATES))
        if row.path.endswith(".hotspot20"):
            return json.dumps({"enable": chance.randint(0, 1), "name": 'a "b"'})
        if whole and row.path.endswith(".ssid"):  # the report escapes it, and no other
            return chance.choice(['two "quotes"', "a/b\\c", "tab\there", "caf\u00e9", ""])
        made = {"ipv4": "{}.{}.{}.{}", "server": "{}.{}.{}.{}", "macs": "2:{:x}:{:X}:{:02x}:0:{:x}",
                "ipset": "10.{}.{}.9/255.255.0.0/0.0.0.0"}
        if row.form in made:
            return made[row.form].format(*chance.choices(range(256), k=4))
        length = chance.randint(max(row.low, 1), min(row.high or 999, chance.choice([9, 255])))
        return "".join(chance.choices("abc KLM0123-_" if whole else 'ab"\\/ \t\x01', k=length))

    def noise(self, depth=0):
        makers = [lambda: 1.5, lambda: None, lambda: "x", list,
                  lambda: [self.noise(depth + 1)] * 2, lambda: {"n": self.noise(depth + 1), "m": 1}]
        return self.random.choice(makers if depth < 4 else makers[:4])()

    def group(self, above="wtp_cfg"):
        chance, members = self.random, {}
        below = (path[len(above) + 1:] for path in self.paths if path.startswith(f"{above}."))
        names = sorted({path.split(".")[0] for path in below})
        if len(names) > 9 and not self.rows:
            names = chance.sample(names, chance.randint(0, len(names)))
        for name in names:
            path, plain = f"{above}.{name}", name.removesuffix("[]")
            least = name == "manage_mac_list[]"  # managing devices of an access point: never empty
            count = self.rows.get(path, 3) if self.rows else chance.randint(least, 3)
            if not self.rows and chance.random() < 0.1:
                members[f"x{len(members)}"] = self.noise()
            if not name.endswith("[]"):
                is_value = path in self.paths
                members[plain] = self.value(self.paths[path]) if is_value else self.group(path)
            elif path in self.paths:
                few = [self.value(self.paths[path]) for _ in range(count)]
                members[plain] = list({text.lower(): text for text in few}.values())
            else:
                members[plain] = [self.group(path) for _ in range(count)]
        return members or {"x": 1}


if __name__ == "__main__":
    main()
