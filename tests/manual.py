# SPDX-License-Identifier: MIT
"""Compares the manual pages with the programs: manual.py ZOV

Commands and options of the one are those of the other; each command refuses every option that its
entry does not name. Files include what docs/architecture.md lets them, and few write to standard
error. The words of messages, help, pages and documents are judged by hunspell; what zov itself
prints is fixed, and names in its sources are known.
"""
import re
from pathlib import Path

from harness import SOURCE, Case, call, generated, main, needs, option_words, run, tool

OTHERS = ("ac-sim", "zov-apply", "zov-check", "zov-export", "zov-rollout")
ZOV_PAGE = Path(SOURCE, "man/zov.8").read_text()
OPTIONS = option_words()
ELSEWHERE = {"nodc", "exit", "kill"}  # the last two see a fake process list elsewhere
NAMES = set("""aps btnfr cfg csv DIR etc proc prometheus ndjson sim src stdin subgraph tty umask
    uname anna carla dmitri farid Mem dddddd ffffff FEFF FFFD UTF SIGHUP SIGINT SIGKILL SIGTERM
    bgcolor BGCOLOR CELLBORDER CELLSPACING color fillcolor fontname fontsize headlabel nodesep
    rankdir ranksep ROWSPAN taillabel Alertmanager Ansible ansible CMake Containerfile fuzzers
    Graphviz hunspell iostream libgcc libstdc promtool setgid setuid shellcheck strace sudo sudoers
    systemd textfile unescaped valgrind writable zsh CAPWAP LLDP NUL Passpoint SSIDs VLANs
    WLANs""".split())
ARCHITECTURE = (SOURCE / "docs/architecture.md").read_text()
LAYERS = re.search(r"## Layers\n\n((?:    .*\n)+)", ARCHITECTURE)[1].split()
FILES = {str(path.relative_to(SOURCE)): path.read_text() for layer in LAYERS
         for path in sorted((SOURCE / layer).rglob("*")) if path.suffix in (".cpp", ".h", ".def")}
WORD = r"(?<![\w./-])[A-Za-z]{3,}(?!\w)"


def texts(*patterns):
    paths = (path for pattern in patterns for path in SOURCE.glob(pattern))
    return {str(path.relative_to(SOURCE)): path.read_text() for path in paths}


def without(pattern, text, flags=re.M | re.S):
    return re.sub(pattern, " ", text, flags=flags)


def named(text):
    return set(re.findall(r"\bFl -([\w-]+)", text))


def entries():
    """The entry of each command. One with several forms has its text behind the last of them."""
    parts = re.split(r"^\.(?:It (?:Xo\n\.)?Cm (\w+)|S[hs] .*)", ZOV_PAGE, flags=re.M)
    found = {}
    for command, text in zip(parts[1::2], parts[2::2]):
        if command:
            found[command] = found.get(command, "") + text
    same = re.compile(r"The options are those of\n\.Cm (\w+)")
    return {command: same.sub(lambda other: found[other[1]], text)
            for command, text in found.items()}


class Manual(Case):
    @needs("mandoc")
    def test_pages_are_sound(self):
        pages = Path(SOURCE, "man").glob("*.[1-9]")
        made = map(generated, ("zov-cfg.5", "zov-report.5"))
        self.assertEqual(call("mandoc", "-Tlint", "-Wwarning", *pages, *made), (0, "", ""))

    @needs("mandoc")
    def test_the_recipes_are_those_of_the_page(self):
        made = call(Path(SOURCE, "scripts/recipes"))[1]
        self.assertEqual(made, Path(SOURCE, "docs/recipes.md").read_text())

    def test_the_usage_text_lists_what_has_an_entry(self):
        usage, pages = run([], absent=True).out.decode(), entries()
        self.assertEqual(set(re.findall(r"^(\w+)\t", usage, re.M)), set(pages))
        for command, text in re.findall(r"^(\w+)\t.*\n((?:\t.*\n)*)", usage, re.M):
            shown = set(re.findall(r"^\t--(\w+)", text, re.M))
            self.assertLessEqual(shown, named(pages[command]), command)

    def test_pages_and_packages_are_of_this_version(self):
        def text(name):
            return Path(SOURCE, name).read_text()
        version = re.search(r"project\(zov VERSION (\S+)", text("CMakeLists.txt"))[1]
        for page in texts("man/*").values():
            self.assertIn(f"\n.Os zov {version}\n", page)
        self.assertRegex(text("packaging/zov.rpmbuild"), rf"\nVersion: +{version}\n")
        self.assertRegex(text("debian/changelog"), rf"^zov \({version}\)")
        self.assertRegex(text("CHANGELOG.md"),
                         rf"\A# Changes\n\n(## Unreleased\n(.*\n)*?)?## {version} - 20")

    def test_the_simulators_page_says_what_each_command_does(self):
        page = Path(SOURCE, "man/ac-sim.1").read_text().split(".Sh REQUESTS")[1].split(".Sh")[0]
        told = " ".join(re.findall(r"^\.(?:It )?Cm (.*)", page, re.M))
        self.assertLessEqual(entries().keys() - {"exit", "kill"}, set(re.findall(r"\w+", told)))

    def test_the_pages_name_the_options_that_there_are(self):
        self.assertEqual(named(ZOV_PAGE), set(OPTIONS))
        pages, known = [ZOV_PAGE], {*OPTIONS, "now", "preserve-status", "short"}  # of others
        for name in OTHERS:
            usage = call(tool(name), "--help")[1]
            options = set(re.findall(r"^  (?:-h, )?--([\w-]+)", usage, re.M))
            pages.append(Path(SOURCE, "man", f"{name}.1").read_text())
            self.assertEqual(named(pages[-1]), options, name)
            synopsis = pages[-1].split(".Sh SYNOPSIS")[1].split(".Sh")[0]
            if "Ar option" not in synopsis:  # which stands for all of them
                self.assertLessEqual(options - {"help", "version"}, named(synopsis), name)
            known |= options
            for option, initial in re.findall(r"^  --([\w-]+) .*\(([^ ()]+)\)$", usage, re.M):
                entry = re.search(rf"\n\.It [^\n]*Fl -{option}\b.*?\n[^.].*?(?=\n\.(It|El|S))",
                                  pages[-1], re.S)[0]
                self.assertRegex(entry, rf"Accepted as by|\b{re.escape(initial)}[.;,\s)]", option)
        for page in pages:  # command lines of any
            typed = re.findall(r"(?<![\w-])--([a-z][\w-]*)", page.replace(r"\-", "-"))
            self.assertLessEqual(set(typed), known)

    def test_every_command_refuses_what_its_entry_does_not_name(self):
        refused = [(command, option) for command, text in entries().items()
                   if command not in ELSEWHERE
                   for option in OPTIONS.keys() - named(text) - {"acserver", "acport"}]
        for command, option in refused:
            with self.subTest(command=command, option=option):
                self.expect(run([command, *OPTIONS[option]]),
                            err=f"ERROR: Unknown option --{option}.\n".encode())

    @needs("hunspell")
    def test_words(self):
        prose, code = {}, " ".join(texts("src/**/*.cpp", "src/**/*.h").values())
        known = NAMES | set(re.findall(r"\w+", without("//.*", code, re.M)))
        for path, text in texts("companions/*/*.[ch]*", "sim/*.*", "src/*/*.def").items():
            literals = re.findall(r'"((?:[^"\\\n]|\\.)*)"', without("//.*|#include.*", text, re.M))
            prose[path] = without(r"\\[ntr]|\\x..|%[-+.*\d]*[lzh]*[a-zA-Z]", " ".join(literals))
        for path, text in texts("man/*").items():
            text = without(r"^\.Bd -literal.*?^\.Ed|^\..*?$|\\&", text.replace(r"\-", "-"))
            prose[path] = text.replace(r"\(aq", "'")
        for path, text in texts("*.md", "docs/*.md").items():
            prose[path] = without(r"^```.*?^```|`[^`]*`|^    .*?$|\]\([^)]*\)", text)
        words = {word: path for path, text in prose.items() for word in re.findall(WORD, text)
                 if word not in known and not word.startswith("Zov")}
        self.assertGreater(len(words), 1000)  # there is something to judge
        status, out, err = call("hunspell", "-d", "en_GB", "-l", data="\n".join(words))
        self.assertEqual((status, err), (0, ""))
        self.assertEqual({word: words[word] for word in out.split()}, {})


def include_name(path):
    return path.removeprefix("src/").removeprefix("companions/").split("/")[0]


class Layers(Case):
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
