# SPDX-License-Identifier: MIT
"""What release builds are hardened with, as readelf(1) shows it:
hardened.py PROGRAM... LIBRARY...

Programs show what they are linked with, the libraries of our own objects what those are compiled
with: what others compiled, and the programs hold, has a stack protector in any case.
"""
import re
import sys
import unittest

from harness import call, generated, main, needs

MARKS = {"a position-independent program": "DYN (Position-Independent Executable file)",
         "read-only relocations": " GNU_RELRO ", "immediate binding": " BIND_NOW"}
LIBRARY_MARKS = {"a stack protector": "UND __stack_chk_fail", "checked functions": "printf_chk"}


class Hardened(unittest.TestCase):
    @needs("systemd-analyze")
    def test_service(self):
        unit = generated("../companions/zov-export.service")
        done = call("systemd-analyze", "security", "--offline=true", "--threshold=15", unit)
        self.assertEqual(done[0], 0, done)

    def test_programs(self):
        for program in sys.argv[1:]:
            status, shown, _ = call("readelf", "-Wldhs", program)
            self.assertEqual(status, 0)
            is_library = program.endswith(".a")
            for name, mark in (LIBRARY_MARKS if is_library else MARKS).items():
                self.assertTrue(mark in shown, f"{program} has not got {name}")
            self.assertTrue(is_library or re.search(r"GNU_STACK .* RW ", shown),
                            f"{program} has an executable stack")


main()
