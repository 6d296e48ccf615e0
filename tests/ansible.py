# SPDX-License-Identifier: MIT
"""The plays of examples/ansible, for three simulated controllers on this host: ansible.py ZOV"""
import json
import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

from controllers import AP, Controller
from harness import SOURCE, main, program

PLAYS = Path(SOURCE, "examples/ansible")
FAST = "--settle 0.3 --interval 0.1"


class Plays(unittest.TestCase):
    def setUp(self):
        self.folder = self.enterContext(tempfile.TemporaryDirectory())
        # At site b the access point fails, whatever it is asked to do.
        self.sites = {site: self.enterContext(Controller(*options)) for site, options in (
            ("a", ()), ("c", ()),
            ("b", ("--config", f"{AP}=refuse:19:full", "--upgrade", f"{AP}=fail")))}
        hosts = {}
        for site, controller in sorted(self.sites.items()):
            files = Path(self.folder, site, "files")
            files.mkdir(parents=True)
            Path(files, f"{AP.replace(':', '-')}.json").write_text(
                json.dumps({"wtp_cfg": {"location": "here"}}))
            hosts[f"site-{site}"] = {
                "ansible_connection": "local", "zov_port": controller.port, "zov_files": str(files),
                "zov_backup": f"{self.folder}/{site}/backup"}
        common = {"zov_controller": "--acserver 127.0.0.1 --acport {{ zov_port }}",
                  "zov_apply_options": FAST, "zov_rollout_options": f"--mac {AP} {FAST}"}
        Path(self.folder, "inventory.yml").write_text(
            json.dumps({"controllers": {"hosts": hosts, "vars": common}}))

    def play(self, name, *options):
        """The exit status, and of each site that was reached how many tasks came to what."""
        environment = {**os.environ, "PATH": f"{Path(program()).parent}:{os.environ['PATH']}",
                       "HOME": self.folder, "XDG_STATE_HOME": self.folder}
        done = subprocess.run(
            ["ansible-playbook", "-i", f"{self.folder}/inventory.yml", PLAYS / f"{name}.yml",
             *options], env=environment, capture_output=True, text=True, timeout=100)
        counts = re.findall(r"^site-(\w) .*changed=(\d+) .*failed=(\d+)", done.stdout, re.M)
        return done.returncode, {site: (int(changed), int(failed))
                                 for site, changed, failed in counts}, done.stdout + done.stderr

    def location(self, site):
        return self.sites[site].record(AP)["wtp_cfg"]["location"]

    def version(self, site):
        return self.sites[site].record(AP)["sw_ver"]

    def test_backup_commits_what_has_changed(self):
        log = ["git", "-C", f"{self.folder}/a/backup", "log", "--oneline"]
        for commits, change in (1, None), (1, "here"), (2, None):
            status, counts, shown = self.play("backup")
            self.assertEqual((status, len(counts)), (0, 3), shown)
            self.assertEqual(len(subprocess.check_output(log).splitlines()), commits)
            if change:
                self.sites["a"].configure(AP, {"location": change})

    def test_drift_and_check_mode_change_nothing(self):
        for play in ("drift",), ("apply", "--check"), ("rollout", "--check"):
            status, counts, shown = self.play(*play)
            self.assertEqual((status, counts), (
                0, dict.fromkeys("abc", (play[0] != "rollout", 0))), shown)
            self.assertIn("upgrade" if play[0] == "rollout" else 'location "Floor 1" -> "here"',
                          shown.replace("\\", ""))
        self.assertEqual([self.location(site) for site in "abc"], ["Floor 1"] * 3)
        self.assertEqual([self.version(site) for site in "abc"], ["2.0.1"] * 3)

    def test_a_site_that_fails_stops_the_play(self):
        status, counts, shown = self.play("apply")
        self.assertEqual((status, counts), (2, {"a": (2, 0), "b": (1, 1)}), shown)
        self.assertEqual([self.location(site) for site in "abc"], ["here", "Floor 1", "Floor 1"])
        status, counts, shown = self.play("apply", "--limit", "site-a")
        self.assertEqual((status, counts), (0, {"a": (0, 0)}), shown)
        status, counts, shown = self.play("rollout")
        self.assertEqual((status, counts), (2, {"a": (1, 0), "b": (0, 1)}), shown)
        self.assertEqual([self.version(site) for site in "abc"], ["2.1.0", "2.0.1", "2.0.1"])


main()
