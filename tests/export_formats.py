# SPDX-License-Identifier: MIT
"""What zov-export's JSON, tables and metrics tell of simulated devices, and what describes them."""
import csv
import io
import json
import re
import tempfile
import time
import unittest
from pathlib import Path

import fields
from controllers import AP, Controller, Player
from exporter import devices, make_records, ok, pipe, run, samples
from harness import generated, main, needs

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

    def test_csv(self):
        with Controller() as controller:
            text = ok(controller.port, "--format", "csv").decode()
            rows, device = list(csv.DictReader(io.StringIO(text))), devices(controller.port)[0]
        self.assertEqual(len(rows), 9)
        self.assertEqual(rows[0] | {"uptime": 0}, {
            "mac": AP, "name": "ap-floor1-01", "kind": "access_point", "model": "AP-220",
            "serial": "SN3000001", "location": "Floor 1", "address": "10.3.0.1", "managed": "yes",
            "state": "online", "firmware": device["sw_ver"], "uptime": 0,
            "stations": str(stations(device))})


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
