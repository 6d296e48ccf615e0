# SPDX-License-Identifier: MIT
"""Writes seeds for fuzzing, and documents for measuring, with what the tests make:
seeds.py FOLDER | seeds.py --largest

FOLDER/list_reply gets replies with many sorts of values, for cutting and changing as well;
FOLDER/config_file documents, each behind a character for the kind: 0 access point, 1 switch.
--largest prints every setting of an access point with 2 radios of 8 WLANs, but for its password.
"""
import json
import sys
from pathlib import Path

SOURCE = Path(__file__).parents[1]
sys.path.insert(0, str(SOURCE / "tests"))
import fields  # noqa: E402
import settings  # noqa: E402


def write_replies(folder):
    for name, kind in (("access_point", settings.AP), ("switch", settings.SWITCH)):
        record = fields.rich(kind, counts=(2,), macs=(2,), words=fields.WORDS[3:6])
        (folder / name).write_bytes(fields.reply([record]))
        for seed in range(8):
            record = fields.Maker(seed, counts=(1, 2)).record(kind, cfg=True, detail=True)
            (folder / f"{name}.{seed}").write_bytes(fields.reply([record]))


def write_documents(folder):
    texts = [path.read_text() for path in sorted((SOURCE / "examples").iterdir())]
    for kind, rows in settings.TABLE.items():
        made = [settings.document(*((row.path, settings.extremes(row)[which])
                                    for row in rows.values())) for which in (0, 1)]
        made += [{"wtp_cfg": settings.Documents(seed, kind).group()} for seed in range(20)]
        for number, text in enumerate([*texts, *map(json.dumps, made)]):
            (folder / f"{kind}.{number}").write_text(f"{settings.AP - kind}{text}")


def largest():
    cfg = settings.Documents(1, settings.AP, {
        "wtp_cfg.radio[]": 2, "wtp_cfg.radio[].wlan[]": 8,
        "wtp_cfg.radio[].wlan[].wep.key[]": 4}).group()
    del cfg["password"]
    return json.dumps({"wtp_cfg": cfg}, separators=(",", ":"))


if sys.argv[1] == "--largest":
    print(largest())
else:
    for name, write in (("list_reply", write_replies), ("config_file", write_documents)):
        below = Path(sys.argv[1], name)
        below.mkdir(parents=True, exist_ok=True)
        write(below)
