# SPDX-License-Identifier: MIT
"""zov-export's options, which devices they choose, and a file that cannot be written."""
import os
import re
import resource
import signal
import tempfile
import unittest
from pathlib import Path

from controllers import AP, SWITCH, Controller
from exporter import devices, ok, run
from harness import SOURCE, main

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


class OldFiles(unittest.TestCase):
    """A file has its old contents until the new ones are whole."""

    def check(self, port, form, message, *options, **more):
        with tempfile.TemporaryDirectory() as folder:
            file = Path(folder, "f")
            file.write_text("old")
            write = ("--format", form, "--output", str(file), *options)
            status, out, err = run(port, *write, **more)
            self.assertEqual((status, out), (1, b""))
            self.assertEqual((os.listdir(folder), file.read_text()), (["f"], "old"))
            self.assertIn(message, err.replace(str(file), "FILE"))

    def test_what_does_not_fit(self):
        def limit():
            signal.signal(signal.SIGXFSZ, action)
            resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000))
        with Controller() as controller:
            for form in KNOWN.split()[:6]:
                columns = ("--columns", ",".join(["mac"] * 20)) if form == "csv" else ()
                for action in (signal.SIG_IGN, signal.SIG_DFL):
                    self.check(controller.port, form, "cannot write FILE: File too large\n",
                               *columns, prepare=limit)
            for option, path, reason in (("output", "/dev/full", "No space left on device"),
                                         ("directory", "/dev/null", "Not a directory")):
                status, _, err = run(controller.port, "--format", "cfg", f"--{option}", path)
                self.assertEqual((status, err[-len(reason) - 1:]), (1, f"{reason}\n"), err)


main()
