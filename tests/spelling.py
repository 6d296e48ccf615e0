# SPDX-License-Identifier: MIT
"""The words of messages, help, pages and documents, judged by hunspell: spelling.py ZOV

What zov itself prints is fixed and compared elsewhere; names in its sources are known.
"""
import re
import unittest

from harness import SOURCE, call, main, needs

NAMES = set("""aps btnfr cfg csv DIR etc proc prometheus ndjson sim src stdin subgraph tty umask
    uname anna carla dmitri farid Mem dddddd ffffff FEFF FFFD UTF SIGHUP SIGINT SIGKILL SIGTERM
    bgcolor BGCOLOR CELLBORDER CELLSPACING color fillcolor fontname fontsize headlabel nodesep
    rankdir ranksep ROWSPAN taillabel Alertmanager Ansible ansible CMake Containerfile fuzzers
    Graphviz hunspell iostream libgcc libstdc promtool setgid setuid shellcheck strace sudo sudoers
    systemd textfile unescaped valgrind writable zsh CAPWAP LLDP NUL Passpoint SSIDs VLANs
    WLANs""".split())
WORD = r"(?<![\w./-])[A-Za-z]{3,}(?!\w)"


def texts(*patterns):
    """The texts of files, by their paths."""
    paths = (path for pattern in patterns for path in SOURCE.glob(pattern))
    return {str(path.relative_to(SOURCE)): path.read_text() for path in paths}


def without(pattern, text, flags=re.M | re.S):
    return re.sub(pattern, " ", text, flags=flags)


@needs("hunspell")
class Spelling(unittest.TestCase):
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


main()
