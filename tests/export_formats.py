# SPDX-License-Identifier: MIT
"""What zov-export's JSON, tables and metrics tell of simulated devices, and what describes them."""
import contextlib
import csv
import fcntl
import functools
import io
import json
import os
import pty
import re
import struct
import tempfile
import termios
import time
import unittest
from pathlib import Path

import fields
from controllers import AP, Controller, Player
from exporter import devices, make_records, ok, pipe, run, samples
from harness import generated, main, needs, start, tool

ONLINE = 5


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
    ("kind", lambda one: {1: "other", 2: "switch", 3: "access_point"}[one["wtp_type"]]),
    ("location", "wtp_cfg.location"), ("address", "ip"), ("port", "port"),
    ("mask", "cur_cfg.mask"), ("gateway", "cur_cfg.gateway"), ("dns1", "cur_cfg.dns1"),
    ("dns2", "cur_cfg.dns2"), ("managed", lambda one: ["no", "yes"][one["managed"]]),
    ("state", lambda one: "online" if one["state"] == ONLINE else "offline"),
    ("firmware", "sw_ver"), ("new_firmware", "new_fw_ver"), ("upgrade_state", "upg_state"),
    ("progress", "progress"), ("joined", moment("join_time")), ("changed", moment("change_time")),
    ("memory_used", "mem.used"), ("memory_total", "mem.total"),
    ("radios", lambda one: len(one.get("radio", []))),
    ("channels", lambda one: " ".join(str(radio["cur_cfg"]["channel"])
                                      for radio in one.get("radio", []))),
    ("stations", stations), ("ports", lambda one: len(one.get("switch_port", []))),
    ("ports_up", lambda one: sum(port["link_status"] for port in one.get("switch_port", []))),
    ("poe_budget", lambda one: one.get("poe_global", {}).get("power_budget", 0)),
    ("poe_used", lambda one: one.get("poe_global", {}).get("allocated_power", 0))]


def read_to_end(terminal):
    shown = b""
    with contextlib.suppress(OSError):  # which is the end
        while piece := os.read(terminal, 1 << 16):
            shown += piece
    os.close(terminal)
    return shown


class Tables(unittest.TestCase):
    def test_table(self):
        with Controller() as controller:
            table, report = ok(controller.port, "--format", "table"), devices(controller.port)
        rows = [re.split("  +", line) for line in table.decode().splitlines()]
        self.assertEqual(rows[0], "NAME MAC KIND MODEL FIRMWARE STATIONS UPTIME STATE".split())
        for row, one in zip(rows[1:], report, strict=True):
            radios, online = bool(one.get("radio")), one["state"] == ONLINE
            self.assertEqual(row[:2] + row[5:6] + row[7:], [
                one["name"], one["mac"], str(stations(one)) if radios else "-",
                "online" if online else "offline"])

    def test_table_in_a_terminal(self):
        with Controller() as controller:
            controller.ok("upg", "--mac", AP)
            shown, colours = {}, {}
            for no_color in "", "1":
                ours, theirs = pty.openpty()
                with start([tool("zov-export"), "--format", "table", "--acport", controller.port],
                           stdout=theirs, env={**os.environ, "NO_COLOR": no_color}) as process:
                    os.close(theirs)
                    shown[no_color] = read_to_end(ours).decode()
                    self.assertEqual(process.wait(), 0)
                colours[no_color] = re.findall(r"\x1b\[(3.)m(\w+)\x1b\[m\r\n", shown[no_color])
            report = devices(controller.port)
        self.assertEqual(colours["1"], [])
        self.assertEqual(set(colours[""]), {("33", "upgrading"), ("32", "online")})
        times = re.findall(r" (\S+ \S+) +(?:online|upgrading)", shown["1"])
        for time_shown, one in zip(times, report, strict=True):
            hours, minutes = divmod(one["uptime"] // 60, 60)
            self.assertEqual(time_shown, f"{hours // 24}d {hours % 24}h" if hours > 23
                             else f"{hours}h {minutes}m")

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
        player = Player(*[fields.reply(records)] * 3)
        for columns, shown in ((80, 12), (100, 15), (300, 32)):
            ours, theirs = pty.openpty()
            fcntl.ioctl(theirs, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
            with start([tool("zov-export"), "--format", "table", "--acport", player.port],
                       stdout=theirs) as process:
                os.close(theirs)
                text = read_to_end(ours).decode()
            self.assertEqual((process.returncode, text.splitlines()[1].split()[0]),
                             (0, "n" * (shown - 3) + "..."))

    def test_csv(self):
        with Controller("--upgrade", f"{AP}=hang") as controller:
            controller.ok("upg", "--mac", AP)
            text = ok(controller.port, "--format", "csv").decode()
            usual, report = next(csv.reader(io.StringIO(text))), devices(controller.port)
            names = [name for name, *_ in CSV]
            text = ok(controller.port, "--format", "csv", "--columns", ",".join(names)).decode()
        self.assertEqual(" ".join(usual), "mac name kind model serial location address managed "
                         "state firmware uptime stations")
        for row, one in zip(csv.DictReader(io.StringIO(text)), report, strict=True):
            for name, *path in CSV:
                cell = path[0](one) if callable(path[0]) else functools.reduce(
                    lambda value, key: value.get(key, {}), path[0].split("."), one)
                self.assertEqual(row[name], "" if cell == {} else str(cell), name)

    def test_csv_of_times(self):
        [record] = make_records([b"x"], [b"h"], 1, (3,))
        columns = ("--format", "csv", "--columns", "uptime,last_active")
        for last in (record["last_time"], 0):
            player = Player(fields.reply([record | {"last_time": last}]))
            shown = time.strftime("%FT%TZ", time.gmtime(last)) if last else ""
            self.assertEqual(ok(player.port, *columns).decode(),
                             f"uptime,last_active\r\n{record['uptime']},{shown}\r\n")


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
    def test_devices_that_are_listed_twice(self):
        reply = fields.reply(make_records([b"x"], [b"h"], 1) * 2)
        status, out, err = run(Player(reply).port, "--format", "prometheus", "--metrics", "all")
        self.assertEqual((status, err.count("again, which is left out\n")), (1, 3))
        self.assertEqual(len(samples(out.decode())["zov_device_info"]), 3)
        self.assertEqual(pipe(out, "promtool", "check", "metrics"), b"")


main()
