# SPDX-License-Identifier: MIT
"""What release builds are hardened with, as readelf(1) shows it: hardened.py PROGRAM..."""
import re
import subprocess
import sys
import unittest

MARKS = {"a position-independent program": "DYN (Position-Independent Executable file)",
         "read-only relocations": " GNU_RELRO ", "immediate binding": " BIND_NOW",
         "a stack protector": "__stack_chk_fail@", "checked functions": "printf_chk@"}


class Hardened(unittest.TestCase):
    def test_programs(self):
        for program in sys.argv[1:]:
            shown = subprocess.run(["readelf", "-Wldhs", program], capture_output=True, text=True,
                                   check=True).stdout
            for name, mark in MARKS.items():
                self.assertTrue(mark in shown, f"{program} has not got {name}")
            self.assertTrue(re.search(r"GNU_STACK .* RW ", shown),
                            f"{program} has an executable stack")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=0)
