# SPDX-License-Identifier: MIT
"""The alerts, judged by promtool: alerts.py ZOV

Each has series that trigger it when its time is over, and not before; and series that do not. The
series are some that zov-export writes.
"""
import json
import re
import shutil
import tempfile
import textwrap
import unittest
from pathlib import Path

from controllers import AP, Controller
from harness import SOURCE, call, main, needs, tool

RULES = f"{SOURCE}/companions/export/zov.rules.yml"

# Alert, series of one value a minute that trigger it (a+bxN: from a, N times b more), the minute
# when it fires first, and series that never do.
CASES = (
    ("ZovControllerDown", ["zov_controller_up 1x5 0x30"], 9, ["zov_controller_up 1x5 0x2 1x30"]),
    ("ZovMetricsOld", ["zov_list_timestamp_seconds 0x60"], 4,
     ["zov_list_timestamp_seconds 0+60x200"]),
    ("ZovDeviceDown", ["zov_device_up 0x30"], 5, ["zov_device_up 0x4 1x30"]),
    ("ZovManyDevicesDown",
     ['zov_devices{state="offline"} 2x30', 'zov_devices{state="online"} 17x30'], 5,
     ['zov_devices{state="offline"} 2x30', 'zov_devices{state="online"} 18x30']),
    ("ZovUpgradePending", ["zov_device_upgrade_pending 1x1600"], 1440,
     ["zov_device_upgrade_pending 1x1400 0x100"]),
    ("ZovUpgradeStuck", ["zov_device_upgrade_progress 40x90"], 50,
     ["zov_device_upgrade_progress 0+1x40 40+0x20 41+1x40"]),
    ("ZovPoeNearBudget", ["zov_poe_allocated_watts 91x30", "zov_poe_budget_watts 100x30"], 5,
     ["zov_poe_allocated_watts 90x30", "zov_poe_budget_watts 100x30"]),
    ("ZovDeviceRestarting",
     ["zov_device_uptime_seconds 60+60x3 60+60x3 60+60x3 60+60x3 60+60x30"], 16,
     ["zov_device_uptime_seconds 60+60x3 60+60x3 60+60x3 60+60x40"]),
)
NEVER = 1500


def series(line):
    name, *values = line.split(" ")
    labels = 'kind="access_point",managed="yes",' if name.startswith("zov_devices") else 'mac="M",'
    labels = "" if name.startswith(("zov_controller", "zov_list")) else labels
    name, _, given = name.partition("{")
    labels += 'job="j",instance="i"' + ("," + given if given else "}")
    return {"series": name + "{" + labels,
            "values": " ".join(values)}


INFO = {"series": 'zov_device_info{mac="M",name="ap",kind="access_point",job="j",instance="i"}',
        "values": f"1x{NEVER}"}


def fires(lines, minutes, alert):
    """Whether promtool finds the alert at any of the minutes: it compares with none."""
    tests = {"rule_files": [RULES], "evaluation_interval": "1m", "tests": [
        {"interval": "1m", "input_series": [INFO, *map(series, lines)],
         "alert_rule_test": [{"eval_time": f"{minute}m", "alertname": alert, "exp_alerts": []}
                             for minute in minutes]}]}
    with tempfile.NamedTemporaryFile("w", suffix=".yml") as file:
        json.dump(tests, file)
        file.flush()
        status, out, err = call("promtool", "test", "rules", file.name)
    assert status == 0 or "got:[" in out + err, out + err
    return status != 0


@needs("promtool")
class Alerts(unittest.TestCase):
    def test_series_are_those_that_are_exported(self):
        with Controller("--switches", "1") as controller:
            controller.ok("upg", "--mac", AP)
            words = (tool("zov-export"), "--acport", controller.port, "--format", "prometheus")
            text = call(*words)[1]
        exported = {(name, frozenset(re.findall(r'(\w+)="', labels)))
                    for name, labels in re.findall(r"^(\w+)(.*) ", text, re.M)}
        lines = [line for _, some, _, others in CASES for line in some + others]
        for one in (INFO, *map(series, lines)):
            name, labels = re.match(r"(\w+)(.*)", one["series"]).groups()
            labels = set(re.findall(r'(\w+)="', labels)) - {"job", "instance"}
            self.assertTrue(any(name == known and labels <= has for known, has in exported), one)

    def test_rules_and_the_set_up_that_is_shown(self):
        status, out, err = call("promtool", "check", "rules", RULES)
        self.assertEqual((status, err, f" {len(CASES)} rules found" in out), (0, "", True), out)
        for word in ("summary:", "description:", "severity:"):
            self.assertEqual(Path(RULES).read_text().count(word), len(CASES))
        page = Path(SOURCE, "docs/monitoring.md").read_text()
        shown = re.search("(?m)^    rule_files.*\n(    .*\n)*", page)[0]
        with tempfile.TemporaryDirectory() as folder:
            shutil.copy(RULES, folder)
            file = Path(folder, "prometheus.yml")
            file.write_text(textwrap.dedent(shown))
            status, out, err = call("promtool", "check", "config", file)
            self.assertEqual((status, err), (0, ""))
            self.assertIn("1 rule files found", out)

    def test_each_fires_when_its_time_is_over(self):
        for alert, triggers, minute, harmless in CASES:
            with self.subTest(alert):
                self.assertFalse(fires(triggers, range(minute), alert))
                self.assertTrue(fires(triggers, [minute], alert))
                self.assertFalse(fires(harmless, [*range(120), NEVER], alert))


main()
