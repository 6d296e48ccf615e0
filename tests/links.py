# SPDX-License-Identifier: MIT
"""Follows the links of the documents: links.py ZOV; of those in a folder: links.py ZOV FOLDER

In the source and as installed; those of a package that is unpacked are in a folder.
"""
import re
import sys
import tempfile
import unittest
from pathlib import Path

from harness import SOURCE, call, main, program


def broken(folder):
    """Links of README.md, and of the pages it leads to, that lead nowhere; how many pages."""
    found, seen, to_read = [], set(), [Path(folder, "README.md")]
    while to_read:
        page = to_read.pop()
        for link in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", page.read_text()):
            target = (page.parent / link).resolve()
            if not target.exists():
                found.append(f"{page}: {link}")
            elif target.suffix == ".md" and target not in seen:
                seen.add(target)
                to_read.append(target)
    return found, len(seen)


class Links(unittest.TestCase):
    def check(self, folder):
        found, pages = broken(folder)
        self.assertEqual(found, [])
        self.assertGreater(pages, 6)

    def test_in_the_source(self):
        self.check(SOURCE)

    def test_as_installed(self):
        with tempfile.TemporaryDirectory() as folder:
            build = Path(program()).parents[1]
            status, out, err = call("cmake", "--install", build, "--prefix", folder)
            self.assertEqual((status, err), (0, ""))
            paths = re.findall("^-- (?:Installing|Up-to-date): (.*)", out, re.M)
            self.assertEqual([path for path in paths if not path.startswith(folder)], [])
            self.check(Path(folder, "share/doc/zov"))


if sys.argv[2:]:
    sys.exit("\n".join(broken(sys.argv[2])[0]) or 0)
main()
