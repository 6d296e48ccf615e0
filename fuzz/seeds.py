# SPDX-License-Identifier: MIT
"""Writes seeds for fuzzing, and documents for measuring, with what the tests make:
seeds.py FOLDER | seeds.py --largest

In FOLDER each target of fuzzing gets a folder of its own. --largest prints every setting of an
access point with 2 radios of 8 WLANs, but for its password.
"""
import json
import sys
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(SOURCE / "tests"))
MODE = sys.argv[1]
sys.argv = [sys.argv[0], "zov"]  # the program that the tests would run
import fields  # noqa: E402
import settings  # noqa: E402
import transcripts  # noqa: E402

# What the command lines of reply.cpp begin with, and the formats of export.cpp, in their order.
LINES = ("ac:ac --json:online:wtpflag:wtps:wtps --json:wtps --breif:wtps --fwresult:cfg:upg:rst:"
         "scan:bgscan:autoch:autotp:initfw:sh:fwlist:mem").split(":")
FORMATS = 8


def replies():
    """Lists of devices with many sorts of values."""
    for kind in (settings.AP, settings.SWITCH):
        yield fields.reply([fields.rich(kind, counts=(2,), macs=(2,), words=fields.WORDS[3:6])])
        for seed in range(8):
            record = fields.Maker(seed, counts=(1, 2)).record(kind, cfg=True, detail=True)
            yield fields.reply([record])


def documents():
    """Configuration files, each behind a character for the kind: 0 access point, 1 switch."""
    texts = [path.read_text() for path in sorted((SOURCE / "examples").glob("*.json"))]
    for kind, rows in settings.TABLE.items():
        made = [settings.document(*((row.path, settings.extremes(row)[which])
                                    for row in rows.values())) for which in (0, 1)]
        made += [{"wtp_cfg": settings.Documents(seed, kind).group()} for seed in range(20)]
        for text in [*texts, *map(json.dumps, made)]:
            yield f"{settings.AP - kind}{text}".encode()


def largest():
    cfg = settings.Documents(1, settings.AP, {
        "wtp_cfg.radio[]": 2, "wtp_cfg.radio[].wlan[]": 8,
        "wtp_cfg.radio[].wlan[].wep.key[]": 4}).group()
    del cfg["password"]
    return json.dumps({"wtp_cfg": cfg}, separators=(",", ":"))


def played():
    """Of each transcript the command line, what was sent, and what was received."""
    for path in sorted((SOURCE / "tests/transcripts").glob("*.txt")):
        for case in transcripts.read_transcripts(path):
            yield " ".join(case.words), *(
                b"".join(step[1] for step in case.steps if step[0] == side) for side in "><")


def seeds():
    """The target and the content of each seed."""
    lists = list(replies())
    for words, sent, received in played():
        yield "request", sent
        lines = [line for line in LINES if words.startswith(line)]
        if lines:
            yield "reply", bytes([LINES.index(max(lines, key=len))]) + received
        if words.startswith("wtps"):
            lists.append(received)
    for content in lists:
        for choice in range(FORMATS):
            yield "export", bytes([choice]) + content
        for line in range(LINES.index("wtps"), LINES.index("cfg")):
            yield "reply", bytes([line]) + content
    files = list(documents())
    for content, other in zip(files, files[1:] + files[:1]):
        yield "check", content
        yield "merge", content + b"\0" + other[1:] + b"\0radio[0].tx_power=17"


if MODE == "--largest":
    print(largest())
else:
    for number, (target, seed) in enumerate(seeds()):
        folder = Path(MODE, target)
        folder.mkdir(parents=True, exist_ok=True)
        (folder / str(number)).write_bytes(seed)
