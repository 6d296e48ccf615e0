# SPDX-License-Identifier: MIT
"""What a file may include, and which files may write to standard error."""
import re
import unittest
from harness import SOURCE, main

PAGE = (SOURCE / "docs/architecture.md").read_text()
LAYERS = re.search(r"## Layers\n\n((?:    .*\n)+)", PAGE)[1].split()
FILES = {str(path.relative_to(SOURCE)): path.read_text() for layer in LAYERS
         for path in sorted((SOURCE / layer).rglob("*")) if path.suffix in (".cpp", ".h", ".def")}


def include_name(path):
    return path.removeprefix("src/").removeprefix("companions/").split("/")[0]


class Layers(unittest.TestCase):
    def test_includes(self):
        place = {include_name(layer): n for n, layer in enumerate(LAYERS)}
        tools = {include_name(layer) for layer in LAYERS[LAYERS.index("sim"):]
                 if layer.startswith("companions/")}
        for name, text in FILES.items():
            own = include_name(name)
            for included in re.findall(r'^#include "(.*)"', text, re.M):
                directory, _, file = included.partition("/")
                self.assertTrue(file, f"{name} includes {included} without its directory")
                self.assertLessEqual(place[directory], place[own], f"{name} includes {included}")
                if own in tools:
                    self.assertNotIn(directory, tools - {own}, f"{name} includes {included}")

    def test_standard_error(self):
        writes = re.compile(r"[(,] *stderr\b|STDERR_FILENO|\bperror\(|std::cerr")
        writers = {name for name, text in FILES.items()
                   if name.startswith("src/") and writes.search(re.sub("//.*", "", text))}
        self.assertEqual(writers, {"src/util/output.cpp", "src/util/descriptors.cpp"})


main()
