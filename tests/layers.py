# SPDX-License-Identifier: MIT
"""What a file may include, and which files may write to standard error: layers.py SOURCE_FOLDER"""
import re
import sys
import unittest
from pathlib import Path

SOURCE = Path(sys.argv[1])
LAYERS = re.search(r"## Layers\n\n((?:    .*\n)+)", (SOURCE / "docs/architecture.md").read_text())[1].split()
FILES = {str(path.relative_to(SOURCE)): path.read_text() for layer in LAYERS
         for path in sorted((SOURCE / layer).rglob("*.[chd]*")) if path.suffix in (".cpp", ".h", ".def")}


class Layers(unittest.TestCase):
    def test_includes(self):
        place = {layer.removeprefix("src/").removeprefix("companions/"): n for n, layer in enumerate(LAYERS)}
        tools = {layer.split("/")[1] for layer in LAYERS if layer.startswith("companions/")} - {"common"}
        for name, text in FILES.items():
            own = name.removeprefix("src/").removeprefix("companions/").split("/")[0]
            for included in re.findall(r'^#include "(.*)"', text, re.M):
                directory, _, file = included.partition("/")
                self.assertTrue(file, f"{name} includes {included} without its directory")
                self.assertLessEqual(place[directory], place[own], f"{name} includes {included}")
                self.assertFalse(own in tools and directory in tools - {own}, f"{name} includes {included}")

    def test_standard_error(self):
        writes = re.compile(r"[(,] *stderr\b|STDERR_FILENO|\bperror\(|std::cerr")
        writers = {name for name, text in FILES.items()
                   if name.startswith("src/") and writes.search(re.sub("//.*", "", text))}
        self.assertEqual(writers, {"src/util/output.cpp", "src/util/descriptors.cpp"})


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=0)
