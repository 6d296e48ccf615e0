# SPDX-License-Identifier: MIT
"""zov-export: its options, what its formats tell of simulated devices, and hostile texts in every
member, read by the programs that a format is for: export.py ZOV

ZOV_SEED: which fleets have these texts; ZOV_LONG=1: 60 of them.
"""
import contextlib
import csv
import fcntl
import functools
import io
import itertools
import json
import os
import pty
import random
import re
import resource
import signal
import sqlite3
import struct
import tempfile
import termios
import time
import unittest
from pathlib import Path

import fields
from controllers import AP, SWITCH, Controller, Player
from harness import SOURCE, call, generated, main, needs, start, tool

HOSTILE = [
    b"", b"plain", b'say "x" \\ a/b', b"tab\tline\r\nbell\x07", b"cut\0off",
    b"\x1b]0;title\x07\x1b[31m", b"caf\xc3\xa9 \xf0\x9f\x98\x80", b"\xff\xfe", b"\xc0\xaf",
    b"\xed\xa0\x80x", b"\xe2\x82", b"\xf4\x90\x80\x80", b"\xc2\x9b31m\x7f", b'"' * 3000,
    b"\xe2\x82\xac" * 2000, b"=1+1", b"+x", b"@x", b"\tx", b"\rx", b"-a,b", b"#{x}\n",
    b"<&#0;>]]>\\N", b"\xef\xbf\xbe\xef\xbf\xbf",
    b'{"a b": [1, "\\u0041 \\" c", {}], "d":\n[ ]}', b'{"a":1}x', b"[1e5,-0.5, true ,null]",
    b"01", b"[1,]",
    b'"\xff"', b'"\x7f\xc2\x9b"', b"[" * 64 + b"]" * 64, b"[" * 65 + b"]" * 65, b"NaN", b"1.",
    b'["\\x"]', b"-", b'"\t"', b'"\\ud800"', b'"\\ud83d\\ude00"', b"1e999"]
HOSTS = [b"host", b'"q"/\\', b"a\x1f", b"\x7fb", b"c\x80"]
FOREIGN = re.compile(rb"[\0-\x09\x0b-\x1f\x7f]|\xc2[\x80-\x9f]")  # nothing of this may be written
SEED = int(os.environ.get("ZOV_SEED", time.time_ns() % 10**9))
FLEETS = 60 if os.environ.get("ZOV_LONG") else 6
DIGITS = "7" * 9  # begin what stands for a text, three more for each byte
FORMULA = (b"=", b"+", b"-", b"@", b"\t", b"\r")  # a spreadsheet would take it for one
ONLINE = 5


def run(port, *options, **more):
    return call(tool("zov-export"), "--acport", port, *options, raw=True, **more)


def ok(port, *options):
    status, out, err = run(port, *options)
    assert (status, err) == (0, ""), (options, status, err)
    return out


def devices(port, *options):
    return [json.loads(line) for line in ok(port, "--format", "ndjson", *options).splitlines()]


def pipe(data, *words, out=None):
    """What a program makes of data, which has to be `out` if that is given, without a complaint."""
    status, made, err = call(*words, data=data, raw=True, timeout=300)
    assert (status, err) == (0, ""), (words[:2], status, err)
    assert out in (None, made), (words[:2], made)
    return made


def make_records(words, hosts, seed, kinds=(3, 2, 1)):
    """Records of these kinds; the same for the same seed but for their texts."""
    made = []
    for number, kind in enumerate(kinds):
        maker = fields.Maker(seed + number, counts=(0, 1, 2), words=words, hosts=hosts)
        record = maker.record(kind, cfg=True, detail=True)
        few = maker.random.choices(words, k=4)
        record["wtp_cfg"][0]["ac_list"] = [
            fields.Text(maker.random.choice(few)[:256].ljust(256, b"\0")) for _ in range(3)]
        made.append(record)
    return made


def samples(text):
    found = {}
    for name, labels, value in re.findall(r"^(\w+)(?:\{(.*)\})? (-?\d+)$", text, re.M):
        labels = {key: re.sub(r"\\(.)", r"\1", shown)
                  for key, shown in re.findall(r'(\w+)="((?:[^"\\]|\\.)*)"', labels)}
        found.setdefault(name, []).append((labels, int(value)))
    return found


def paths(value, path=""):
    """The paths of all members, as the page writes them."""
    if isinstance(value, list) and value and not isinstance(value[0], int):
        return {f"{path}[]"}.union(*(paths(part, f"{path}[]") for part in value))
    if not isinstance(value, dict):
        return set()
    below = {f"{path}.{name}".lstrip("."): part for name, part in value.items()}
    return set(below).union(*(paths(part, name) for name, part in below.items()))


def stations(device):
    return sum(len(wlan["sta"]) for radio in device.get("radio", []) for wlan in radio["wlan"])


class Json(unittest.TestCase):
    @needs(modules=["jsonschema"])
    def test_schema_is_strict(self):
        from jsonschema import Draft202012Validator
        schema = json.loads(generated("wtp_list.schema.json").read_text())
        Draft202012Validator.check_schema(schema)

        def is_valid(device):
            return Draft202012Validator(schema).is_valid({"wtp_list": [device]})
        for device in devices(Player(fields.reply(make_records([b"x"], [b"h"], 1))).port):
            self.assertTrue(is_valid(device))
            for name in device:
                less = {member: value for member, value in device.items() if member != name}
                self.assertEqual(is_valid(less), name == "wtp_cfg", name)
            for more in ({"colour": 1}, {"mac": "2:0"}, {"state": 256}, {"cfg_cap": [0] * 20}):
                self.assertFalse(is_valid(device | more), more)

    def test_page_has_every_member(self):
        printed = set()
        for seed in range(60):
            for choices in ((), ("password",), ("basic",)):
                report = fields.report(make_records([b"1"], [b"h"], seed), "json", *choices)
                printed |= set().union(*map(paths, json.loads(b"{" + report + b"}")["wtp_list"]))
        printed -= {path.removesuffix("[]") for path in printed if path.endswith("[]")}
        page = generated("zov-report.5").read_text()
        self.assertEqual(set(re.findall(r"^\.It Va (\S+)", page, re.M)), printed)


def moment(name):
    """A time of the report as ISO 8601 has it, in UTC; nothing for 0."""
    return lambda one: time.strftime("%FT%TZ", time.gmtime(one[name])) if one[name] else ""


# Each column of csv, and where the report has it.
CSV = [
    ("mac", "mac"), ("name", "name"), ("model", "model"), ("sku", "sku"), ("serial", "sn"),
    ("kind", lambda one: {2: "switch", 3: "access_point"}.get(one["wtp_type"], "other")),
    ("location", "wtp_cfg.location"), ("address", "ip"), ("port", "port"),
    ("mask", "cur_cfg.mask"), ("gateway", "cur_cfg.gateway"), ("dns1", "cur_cfg.dns1"),
    ("dns2", "cur_cfg.dns2"), ("managed", lambda one: "yes" if one["managed"] else "no"),
    ("state", lambda one: {0: "offline", ONLINE: "online"}.get(one["state"], "state 7")),
    ("firmware", "sw_ver"), ("new_firmware", "new_fw_ver"), ("upgrade_state", "upg_state"),
    ("progress", "progress"), ("joined", moment("join_time")), ("changed", moment("change_time")),
    ("uptime", "uptime"), ("last_active", moment("last_time")),
    ("memory_used", "mem.used"), ("memory_total", "mem.total"),
    ("radios", lambda one: len(one.get("radio", []))),
    ("channels", lambda one: " ".join(str(radio["cur_cfg"]["channel"])
                                      for radio in one.get("radio", []))),
    ("stations", stations), ("ports", lambda one: len(one.get("switch_port", []))),
    ("ports_up", lambda one: sum(port["link_status"] > 0 for port in one.get("switch_port", []))),
    ("poe_budget", lambda one: one.get("poe_global", {}).get("power_budget", 0)),
    ("poe_used", lambda one: one.get("poe_global", {}).get("allocated_power", 0))]


def read_to_end(terminal):
    shown = b""
    with contextlib.suppress(OSError):  # which is the end
        while piece := os.read(terminal, 1 << 16):
            shown += piece
    os.close(terminal)
    return shown


def on_terminal(port, columns=0, **variables):
    """What the table is on a terminal of this width."""
    ours, theirs = pty.openpty()
    fcntl.ioctl(theirs, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
    with start([tool("zov-export"), "--format", "table", "--acport", port], stdout=theirs,
               env={**os.environ, **variables}) as process:
        os.close(theirs)
        shown = read_to_end(ours).decode()
    assert process.returncode == 0
    return shown


class Tables(unittest.TestCase):
    def test_table_in_a_terminal(self):
        with Controller("--aps", "10") as controller:
            controller.ok("upg", "--mac", AP)
            controller.ok("rst", "--mac", SWITCH)  # its uptime begins anew
            shown, colours = {}, {}
            for no_color in "", "1":
                shown[no_color] = on_terminal(controller.port, NO_COLOR=no_color)
                colours[no_color] = re.findall(r"\x1b\[(3.)m(\w+)\x1b\[m\r\n", shown[no_color])
            report = devices(controller.port)
        self.assertEqual(colours["1"], [])
        self.assertEqual(set(colours[""]),
                         {("33", "upgrading"), ("32", "online"), ("31", "offline")})
        header, *rows = (re.split("  +", line) for line in shown["1"].splitlines())
        self.assertEqual(header, "NAME MAC KIND MODEL FIRMWARE STATIONS UPTIME STATE".split())
        for row, one in zip(rows, report, strict=True):
            hours, minutes = divmod(one["uptime"] // 60, 60)
            self.assertEqual(row[:2] + row[5:7], [
                one["name"], one["mac"], str(stations(one)) if one.get("radio") else "-",
                "-" if one["state"] != ONLINE else
                f"{hours // 24}d {hours % 24}h" if hours > 23 else
                f"{hours}h {minutes}m" if hours else f"{minutes}m"])

    def test_pipe_that_does_not_wait(self):
        with Controller() as controller:
            ours, theirs = os.pipe()
            fcntl.fcntl(theirs, fcntl.F_SETPIPE_SZ, 4096)
            os.set_blocking(theirs, False)
            with start([tool("zov-export"), "--format", "json", "--acport", controller.port],
                       stdout=theirs) as process:
                os.close(theirs)
                time.sleep(0.3)  # the pipe is full
                self.assertEqual(len(json.loads(read_to_end(ours))["wtp_list"]), 9)
            self.assertEqual(process.returncode, 0)

    def test_names_take_what_a_terminal_has_left(self):
        records = make_records([b"n" * 50], [b"h"], 1, (3,))
        records[0].update(state=ONLINE, uptime=3 * 3600 + 125)
        player = Player(*[fields.reply(records)] * 3)
        for columns, shown in ((80, 12), (100, 15), (300, 32)):
            text = on_terminal(player.port, columns)
            self.assertEqual(text.splitlines()[1].split()[0], "n" * (shown - 3) + "...")
            self.assertIn("  3h 2m  ", text)

    def test_csv(self):
        records = make_records([b"x"], [b"h"], 1, (3, 2, 1, 3))
        records[0].update(state=ONLINE, last_time=0, managed=0)
        records[3]["wtp_cfg"] = []
        records[2]["state"], records[3]["state"] = 0, 7
        for n, radio in enumerate(sum((one.get("radio", []) for one in records), [])):
            radio["cur_cfg.channel"] = n
        port = Player(*[fields.reply(records)] * 3).port
        usual = next(csv.reader(io.StringIO(ok(port, "--format", "csv").decode())))
        self.assertEqual(" ".join(usual), "mac name kind model serial location address managed "
                         "state firmware uptime stations")
        columns, report = ",".join(name for name, _ in CSV), devices(port)
        text = ok(port, "--format", "csv", "--columns", columns).decode()
        for row, one in zip(csv.DictReader(io.StringIO(text)), report, strict=True):
            for name, path in CSV:
                cell = path(one) if callable(path) else functools.reduce(
                    lambda value, key: value.get(key, {}), path.split("."), one)
                self.assertEqual(row[name], "" if cell == {} else str(cell), name)


class Metrics(unittest.TestCase):
    def test_values(self):
        with Controller("--aps", "40", "--switches", "4") as controller:
            controller.ok("upg", "--mac", AP)
            whole, some, fleet = (
                ok(controller.port, "--format", "prometheus", *options).decode()
                for options in (("--metrics", "all"), (), ("--metrics", "fleet")))
            report = devices(controller.port)
        found = samples(whole)
        for name, expected in {
                "devices": len(report), "devices_upgrading": 1, "device_info": len(report),
                "device_up": sum(device["state"] == ONLINE for device in report),
                "device_upgrade_pending": 1, "controller_up": 1,
                "stations": sum(map(stations, report))}.items():
            self.assertEqual(sum(value for _, value in found[f"zov_{name}"]), expected, name)
        rows = [({"mac": device["mac"], "radio": str(r + 1), "wlan": str(w + 1),
                  "ssid": device["wtp_cfg"]["radio"][r]["wlan"][w]["ssid"]}, wlan)
                for device in report for r, radio in enumerate(device.get("radio", []))
                for w, wlan in enumerate(radio["wlan"])]
        rows = [(labels, wlan | {"stations": len(wlan["sta"])}) for labels, wlan in rows]
        for name, key in {"stations": "stations", "transmit_bytes_total": "tx_bytes",
                          "receive_bytes_total": "rx_bytes", "transmit_packets_total": "tx_pkt",
                          "receive_packets_total": "rx_pkt"}.items():
            self.assertEqual(found[f"zov_wlan_{name}"],
                             [(labels, wlan[key]) for labels, wlan in rows], name)
        self.assertEqual(found["zov_poe_allocated_watts"], [
            ({"mac": device["mac"]}, sum(port["output_power"] for port in device["poe_port"]))
            for device in report if device["wtp_type"] == 2 and device["state"] == ONLINE])
        self.assertAlmostEqual(found["zov_list_timestamp_seconds"][0][1], time.time(), delta=20)
        helps = re.findall("(?m)^# HELP .*$", whole)
        self.assertEqual([line for line in helps if not re.fullmatch(r".* [A-Z].*\.", line)], [])
        self.assertEqual(len(found["zov_device_upgrade_state"]), 1)
        self.assertNotRegex(some, "wlan=|port=|radio=")
        self.assertLess(len(some), 750 * len(report))
        self.assertNotIn("mac=", fleet)

    def test_controller_that_is_gone(self):
        with tempfile.TemporaryDirectory() as folder:
            status, _, err = run("1", "--format", "prometheus", "--output", f"{folder}/f")
            left = Path(folder, "f").read_text()
        self.assertEqual((status, "Connection refused" in err), (1, True))
        self.assertEqual(re.sub("(?m)^#.*\n", "", left), "zov_controller_up 0\n")

    @needs("promtool")
    def test_devices_and_ports_that_are_listed_twice(self):
        records = make_records([b"x"], [b"h"], 2)  # a port of each kind
        records[0].update(state=ONLINE, wtp_cfg=[])
        records[1].update({name: [port | {"port": 3} for port in records[1][name] * 2]
                           for name in ("switch_port", "poe_port")}, state=ONLINE)
        records *= 2
        status, out, err = run(Player(fields.reply(records)).port, "--format", "prometheus",
                               "--metrics", "all")
        self.assertEqual((status, err.count("again, which is left out\n")), (1, 3))
        found = samples(out.decode())
        self.assertEqual([len(found[f"zov_{name}"]) for name in (
            "device_info", "switch_port_up", "poe_port_output_power")], [3, 1, 1])
        self.assertEqual(pipe(out, "promtool", "check", "metrics"), b"")


KNOWN = "json ndjson cfg csv prometheus dot table macs"
PAGE = Path(SOURCE, "man/zov-export.1").read_text().split("The columns are")[1].split(".El")[0]
COLUMNS = " ".join(re.findall(r"\w+", " ".join(re.findall(r"^\.It Cm (.*)", PAGE, re.M))))
WRONG = (
    ("--kind switch", "--format is missing, see --help"),
    ("--format xml", f"--format: bad argument 'xml', expected one of: {KNOWN}"),
    ("--format cfg --output f --directory d", "--output and --directory exclude each other"),
    ("--format csv --directory d", "--directory is for --format cfg"),
    ("--format csv --metrics all", "--metrics is for --format prometheus"),
    ("--format csv --partial", "--partial is for --format cfg"),
    ("--format json --columns mac", "--columns is for --format csv"),
    ("--format", "--format requires an argument"),
    ("--format csv --around x", "--around is for --format dot"),
    ("--format csv --columns mac,x\x1b",
     f"--columns: bad argument 'mac,x?', expected one of: {COLUMNS}"),
    ("--format csv --columns=", f"--columns: bad argument '', expected one of: {COLUMNS}"),
    ("--format csv --mac 2:0", "--mac: bad argument '2:0', expected addresses joined by commas"),
    ("--format csv --output=", "--output: bad argument ''"),
    ("--format csv x", "unexpected argument 'x'"), ("--help=1", "--help takes no argument"),
    ("-x", "unknown option '-x', see --help"), ("--x=1", "unknown option '--x=1', see --help"))


class CommandLine(unittest.TestCase):
    def test_wrong_usage(self):
        for options, message in WRONG:
            with self.subTest(options=options):
                done = run("1", *options.split(" "))
                self.assertEqual(done, (2, b"", f"zov-export: {message}\n"))
        self.assertRegex(ok("1", "--version"), rb"^zov-export \d+\.\d+\.\d+\n$")

    def test_choice_of_devices(self):
        with Controller() as controller:
            for options, names in (
                    (["--mac", f"{SWITCH},{AP}"], ["ap-floor1-01", "sw-floor1"]),
                    (["--name", "*-floor1-0[2-4]"], [f"ap-floor1-0{n}" for n in (2, 3, 4)]),
                    (["--name", "sw*1", "--mac", AP], ["ap-floor1-01", "sw-floor1"]),
                    (["--kind", "switch", "--exclude", SWITCH], ["sw-floor2"])):
                self.assertEqual([one["name"] for one in devices(controller.port, *options)], names)
            for form, options, out, message in (
                    ("json", ["--name", "x"], b'{"wtp_list":[]}\n',
                     "no device has a name that matches 'x'"),
                    ("macs", ["--mac", f"{AP},2:0:0:0:0:1"], f"{AP}\n".encode(),
                     "the controller knows no device 02:00:00:00:00:01"),
                    ("macs", ["--kind", "switch", "--exclude", "sw*"], b"", "no device is chosen"),
                    ("cfg", ["--kind", "other"], b"", "there is no configuration to write")):
                self.assertEqual(run(controller.port, "--format", form, *options),
                                 (1, out, f"zov-export: {message}\n"))

    def test_a_file_has_its_old_contents_until_the_new_ones_are_whole(self):
        def limit():
            signal.signal(signal.SIGXFSZ, action)
            resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100))
        with Controller() as controller, tempfile.TemporaryDirectory() as folder:
            file = Path(folder, "f")
            file.write_text("old")
            for form, action in itertools.product(KNOWN.split(), (signal.SIG_IGN, signal.SIG_DFL)):
                status, out, err = run(controller.port, "--format", form, "--output", str(file),
                                       prepare=limit)
                self.assertEqual((status, out, os.listdir(folder), file.read_text()),
                                 (1, b"", ["f"], "old"))
                self.assertIn(f"cannot write {file}: File too large\n", err)
            for option, path, reason in (("output", "/dev/full", "No space left on device"),
                                         ("output", "/dev/fd/x", "No such file or directory"),
                                         ("directory", "/nowhere/x", "No such file or directory"),
                                         ("directory", "/dev/null", "Not a directory")):
                status, _, err = run(controller.port, "--format", "cfg", f"--{option}", path)
                self.assertEqual((status, err[-len(reason) - 1:]), (1, f"{reason}\n"), err)


def edges(text):
    """The links: both devices, each with the text of its port if it is a switch."""
    ports = {mac: re.findall(r'<TD PORT="p\d+">(.*?)</TD>', label) for mac, label in
             re.findall(r'^ +"(\S+)" \[shape=none, .*?label=<(.*)>\];$', text, re.M)}

    def port(mac, cell):
        return ports[mac][int(cell)] if cell else None
    return {(one, port(one, cell), other, port(other, other_cell))
            for one, cell, other, other_cell in re.findall(
                r'^  "(\S+?)"(?::p(\d+):e)? -- "(\S+?)"(?::p(\d+):e|:w)', text, re.M)}


class Topology(unittest.TestCase):
    @needs("dot")
    def test_simulated_devices(self):
        def draw(controller, *options):
            return ok(controller.port, "--format", "dot", *options).decode()
        fleet = ("--aps", "20", "--switches", "3")
        switches, aps = ([f"02:A{kind}:00:00:00:{n:02X}" for n in range(1, count + 1)]
                         for kind, count in ((2, 3), (3, 20)))
        with Controller(*fleet) as controller, Controller(*fleet) as same:
            text = draw(controller)
            self.assertEqual(draw(same), text)
            around = [draw(controller, "--around", name) for name in ("sw-floor2", switches[1])]
            self.assertEqual(run(controller.port, "--format", "dot", "--around", "x"),
                             (1, b"", "zov-export: there is no switch 'x'\n"))
            report = {device["mac"]: device for device in devices(controller.port)}
        online = {mac for mac, device in report.items() if device["state"] == 5}
        expected = {(switches[n // 8], str(n % 8 + 1), mac, None)
                    for n, mac in enumerate(aps) if mac in online}
        expected |= {(one, "10", other, "9") for one, other in zip(switches, switches[1:])}
        self.assertLess(len(online), len(report))
        self.assertEqual(edges(text), expected)
        for mac, number, *_ in expected:  # the ports of the report agree
            port = report[mac]["switch_port"][int(number) - 1]
            self.assertEqual((port["port"], port["link_status"]), (int(number), 1))
        self.assertEqual(pipe(text.encode(), "dot", "-Tsvg").count(b'class="edge"'), len(expected))
        near = {edge for edge in expected if switches[1] in edge}
        self.assertEqual([edges(one) for one in around], [near, near])

    def test_what_neighbours_tell(self):
        one, other = make_records([b"n"], [b"h"], 1, (2, 2))
        ap, far = fields.Mac(b"\2\0\0\0\0\3"), fields.Mac(b"\2\0\0\0\0\4")
        names = [fields.shown(mac) for mac in (one["mac"], other["mac"], ap, far)]

        def lldp(mac, port, remote):
            return {"mac": mac, "localPort": port, "remotePort": remote, "name": b"", "model": b""}

        def device(mac, kind, *links):
            times = ("system_time", "update_time", "link_info_last_time", "no_link_info_first_time")
            return dict.fromkeys(times, 1) | {
                "type": kind, "mac": mac, "ip": fields.Ip(4), "name": b"", "model": b"",
                "link": [{"local_port": port, "mac": to, "remote_port": remote}
                         for port, to, remote in links]}
        one["lldp_dev_list"] = [lldp(other["mac"], 5, b"ge5"), lldp(one["mac"], 6, b"self")]
        other["dev_list"] = []
        # A single cable: each end's own name for its port. Two: as the end tells that knows both.
        x, y = lldp(one["mac"], 7, b"x"), lldp(one["mac"], 8, b"y")
        for back, ports in (([x], {("5", "7")}), ([], {("5", "ge5")}),
                            ([x, y], {("x", "7"), ("y", "8")})):
            other["lldp_dev_list"] = back
            far_link, ap_links = ([(4, ap, b"p")], []) if back else ([], [(6, far, b"4")])
            one["dev_list"] = [device(ap, 3, (3, one["mac"], b"eth1"), *ap_links),
                               device(far, 2, *far_link, (9, fields.Mac(6), b"")),
                               device(other["mac"], 2, (1, one["mac"], b"not this one"))]
            text = ok(Player(fields.reply([one, other])).port, "--format", "dot").decode()
            found = set()
            for left, left_port, right, right_port in edges(text):
                ends = sorted(((names.index(left), left_port), (names.index(right), right_port)))
                found.add((ends[0][0], ends[1][0], ends[0][1], ends[1][1]))
            self.assertEqual(found, {(0, 1, *pair) for pair in ports} |
                             {(0, 2, "3", None), (2, 3, None, "4")})
            self.assertEqual(text.count(",dashed"), 1)


def decoded(text):
    return text.split(b"\0")[0].decode("utf-8", "replace")


def clean(text):
    """What formats without escapes show of it."""
    return re.sub(r"[\0-\x1f\x7f-\x9f]", "\ufffd", decoded(text))


def coded(value):
    """A record with digits for its texts."""
    if isinstance(value, dict):
        return {name: coded(part) for name, part in value.items()}
    if isinstance(value, list):
        return list(map(coded, value))
    if not isinstance(value, fields.Text):
        return value
    return fields.Text(f"{DIGITS}{''.join(f'{ord(byte):03}' for byte in value.shown())}".encode())


def translated(value, path=""):
    """What is shown of a record with digits, as it is of one with texts."""
    if isinstance(value, dict):
        return {name: translated(part, f"{path}.{name}") for name, part in value.items()}
    if isinstance(value, list):
        return [translated(part, path) for part in value]
    if not str(value).startswith(DIGITS):
        return value
    text = bytes(map(int, re.findall("...", value[9:])))
    text = text.translate(None, b"\r\n") if path.endswith(".dev_list.model") else text
    return hotspot(text) if path.endswith(".hotspot20") else decoded(text)


def number(digits):
    return digits if digits.startswith(DIGITS) else int(digits)


def refuse_constant(name):
    raise ValueError(name)


def depth(value):
    below = value.values() if isinstance(value, dict) else value
    return 1 + max(map(depth, below), default=0) if isinstance(value, (dict, list)) else 0


def hotspot(text):
    """The member hotspot20: JSON, if the text is some that others can read."""
    try:
        made = json.loads(text.decode() or "null", parse_constant=refuse_constant)
        json.dumps(made, ensure_ascii=False, allow_nan=False).encode()  # no lone surrogate
        return made if depth(made) <= 64 else decoded(text)
    except ValueError:
        return decoded(text)


class Fleets(unittest.TestCase):
    maxDiff = 2000

    def each(self, check, form, *options):
        """Checks what is written of random fleets: valid text without control characters."""
        texts = itertools.cycle(reversed(HOSTILE))  # those that look like JSON are the last
        for fleet in range(FLEETS):
            rng = random.Random(f"{SEED} {fleet}")
            words = [*HOSTILE, *(b"".join(rng.choices(HOSTILE, k=3)) for _ in range(10)),
                     *(rng.randbytes(rng.randrange(40)) for _ in range(10))]
            records = make_records(words, HOSTS, rng.getrandbits(32), [3, 3, 3, 1] + [2] * 7)
            for at, record in enumerate(records[4:], fleet * 7):  # each text is a switch's name
                record["name"] = fields.Text(HOSTILE[at % len(HOSTILE)])
            for wlan in (wlan for record in records[:3] for radio in record["wtp_cfg"][0]["radio"]
                         for wlan in radio["wlan"]):
                wlan["hotspot20"] = fields.Text(next(texts))
            with self.subTest(seed=SEED, fleet=fleet):
                out = ok(Player(fields.reply(records)).port, "--format", form, *options)
                text = out.replace(b"\r\n", b"\n") if form == "csv" else out
                self.assertIsNone(FOREIGN.search(text))
                text.decode()
                check(records, out)

    @needs("jq", modules=["jsonschema"])
    def test_json(self):
        from jsonschema import Draft202012Validator
        schema = json.loads(generated("wtp_list.schema.json").read_text())

        def check(records, out):
            made = json.loads(out, parse_constant=refuse_constant)
            report = b"{" + fields.report(coded(records), "json") + b"}"
            self.assertEqual(made, translated(json.loads(report, parse_int=number)))
            self.assertEqual(json.loads(pipe(out, "jq", "-c", ".")), made)
            Draft202012Validator(schema).validate(made)
            lines = ok(Player(fields.reply(records)).port, "--format", "ndjson").splitlines()
            self.assertEqual(list(map(json.loads, lines)), made["wtp_list"])
        self.each(check, "json")

    @needs("sqlite3")
    def test_csv(self):
        columns = ["serial", "name", "location", "mac", "port"]

        def check(records, out):
            self.assertEqual(out.count(b"\n"), out.count(b"\r\n"))
            rows = list(csv.reader(io.StringIO(out.decode(), newline="")))
            self.assertEqual(rows[0], columns)
            for row, record in zip(rows[1:], records, strict=True):
                texts = (record["sn"], record["name"], record["wtp_cfg"][0]["location"])
                texts = ["'" * text.startswith(FORMULA) + clean(text) for text in texts]
                self.assertEqual(row, [*texts, fields.shown(record["mac"]), str(record["port"])])
            with tempfile.TemporaryDirectory() as folder:
                Path(folder, "csv").write_bytes(out)
                pipe(b"", "sqlite3", f"{folder}/db", f".import --csv {folder}/csv devices")
                base = sqlite3.connect(f"{folder}/db")
                self.assertEqual(list(map(list, base.execute("select * from devices"))), rows[1:])
                base.close()
        self.each(check, "csv", "--columns", ",".join(columns))

    @needs("promtool")
    def test_prometheus(self):
        def check(records, out):
            pipe(out, "promtool", "check", "metrics", out=b"")
            self.assertEqual([one["name"] for one, _ in samples(out.decode())["zov_device_info"]],
                             [clean(record["name"]) for record in records])
        self.each(check, "prometheus", "--metrics", "all")

    @needs("dot", "xmllint")
    def test_dot(self):
        def check(_, out):
            pipe(pipe(out, "dot", "-Tsvg"), "xmllint", "--noout", "-", out=b"")
        self.each(check, "dot")

    def test_table_and_macs(self):
        def check_table(records, out):
            self.assertEqual(out.count(b"\n"), 1 + len(records))

        def check_macs(records, out):
            macs = ",".join(fields.shown(record["mac"]) for record in records)
            self.assertEqual(out.decode(), f"{macs}\n")
        self.each(check_table, "table")
        self.each(check_macs, "macs")


print(f"ZOV_SEED={SEED}", flush=True)
main()


if __name__ == "__main__":
    main()
