# SPDX-License-Identifier: MIT
"""Random fleets with hostile texts in every member: each format is read by the programs that it is
for. ZOV_SEED: which fleets; ZOV_LONG=1: 60 of them.
"""
import csv
import io
import itertools
import json
import os
import random
import re
import sqlite3
import tempfile
import time
import unittest
from pathlib import Path

import fields
from controllers import Player
from exporter import FOREIGN, HOSTILE, HOSTS, make_records, ok, pipe, samples
from harness import generated, main, needs

SEED = int(os.environ.get("ZOV_SEED", time.time_ns() % 10**9))
FLEETS = 60 if os.environ.get("ZOV_LONG") else 6
DIGITS = "7" * 9  # begin what stands for a text, three more for each byte
FORMULA = (b"=", b"+", b"-", b"@", b"\t", b"\r")  # a spreadsheet would take it for one


def decoded(text):
    return text.split(b"\0")[0].decode("utf-8", "replace")


def clean(text):
    """What formats without escapes show of it."""
    return re.sub(r"[\0-\x1f\x7f-\x9f]", "\ufffd", decoded(text))


def coded(value):
    """A record with digits for its texts."""
    if isinstance(value, dict):
        return {name: coded(part) for name, part in value.items()}
    if isinstance(value, list):
        return list(map(coded, value))
    if not isinstance(value, fields.Text):
        return value
    return fields.Text(f"{DIGITS}{''.join(f'{ord(byte):03}' for byte in value.shown())}".encode())


def translated(value, path=""):
    """What is shown of a record with digits, as it is of one with texts."""
    if isinstance(value, dict):
        return {name: translated(part, f"{path}.{name}") for name, part in value.items()}
    if isinstance(value, list):
        return [translated(part, path) for part in value]
    if not str(value).startswith(DIGITS):
        return value
    text = bytes(map(int, re.findall("...", value[9:])))
    text = text.translate(None, b"\r\n") if path.endswith(".dev_list.model") else text
    return hotspot(text) if path.endswith(".hotspot20") else decoded(text)


def number(digits):
    return digits if digits.startswith(DIGITS) else int(digits)


def refuse_constant(name):
    raise ValueError(name)


def depth(value):
    below = value.values() if isinstance(value, dict) else value
    return 1 + max(map(depth, below), default=0) if isinstance(value, (dict, list)) else 0


def hotspot(text):
    """The member hotspot20: JSON, if the text is some that others can read."""
    try:
        made = json.loads(text.decode() or "null", parse_constant=refuse_constant)
        json.dumps(made, ensure_ascii=False, allow_nan=False).encode()  # no lone surrogate
        return made if depth(made) <= 64 else decoded(text)
    except ValueError:
        return decoded(text)


class Fleets(unittest.TestCase):
    maxDiff = 2000

    def each(self, check, form, *options):
        """Checks what is written of random fleets: valid text without control characters."""
        texts = itertools.cycle(reversed(HOSTILE))  # those that look like JSON are the last
        for fleet in range(FLEETS):
            rng = random.Random(f"{SEED} {fleet}")
            words = [*HOSTILE, *(b"".join(rng.choices(HOSTILE, k=3)) for _ in range(10)),
                     *(rng.randbytes(rng.randrange(40)) for _ in range(10))]
            records = make_records(words, HOSTS, rng.getrandbits(32), [3, 3, 3, 1] + [2] * 7)
            for at, record in enumerate(records[4:], fleet * 7):  # each text is a switch's name
                record["name"] = fields.Text(HOSTILE[at % len(HOSTILE)])
            for wlan in (wlan for record in records[:3] for radio in record["wtp_cfg"][0]["radio"]
                         for wlan in radio["wlan"]):
                wlan["hotspot20"] = fields.Text(next(texts))
            with self.subTest(seed=SEED, fleet=fleet):
                out = ok(Player(fields.reply(records)).port, "--format", form, *options)
                text = out.replace(b"\r\n", b"\n") if form == "csv" else out
                self.assertIsNone(FOREIGN.search(text))
                text.decode()
                check(records, out)

    @needs("jq", modules=["jsonschema"])
    def test_json(self):
        from jsonschema import Draft202012Validator
        schema = json.loads(generated("wtp_list.schema.json").read_text())

        def check(records, out):
            made = json.loads(out, parse_constant=refuse_constant)
            report = b"{" + fields.report(coded(records), "json") + b"}"
            self.assertEqual(made, translated(json.loads(report, parse_int=number)))
            self.assertEqual(json.loads(pipe(out, "jq", "-c", ".")), made)
            Draft202012Validator(schema).validate(made)
            lines = ok(Player(fields.reply(records)).port, "--format", "ndjson").splitlines()
            self.assertEqual(list(map(json.loads, lines)), made["wtp_list"])
        self.each(check, "json")

    @needs("sqlite3")
    def test_csv(self):
        columns = ["serial", "name", "location", "mac", "port"]

        def check(records, out):
            self.assertEqual(out.count(b"\n"), out.count(b"\r\n"))
            rows = list(csv.reader(io.StringIO(out.decode(), newline="")))
            self.assertEqual(rows[0], columns)
            for row, record in zip(rows[1:], records, strict=True):
                texts = (record["sn"], record["name"], record["wtp_cfg"][0]["location"])
                texts = ["'" * text.startswith(FORMULA) + clean(text) for text in texts]
                self.assertEqual(row, [*texts, fields.shown(record["mac"]), str(record["port"])])
            with tempfile.TemporaryDirectory() as folder:
                Path(folder, "csv").write_bytes(out)
                pipe(b"", "sqlite3", f"{folder}/db", f".import --csv {folder}/csv devices")
                base = sqlite3.connect(f"{folder}/db")
                self.assertEqual(list(map(list, base.execute("select * from devices"))), rows[1:])
                base.close()
        self.each(check, "csv", "--columns", ",".join(columns))

    @needs("promtool")
    def test_prometheus(self):
        def check(records, out):
            pipe(out, "promtool", "check", "metrics", out=b"")
            self.assertEqual([one["name"] for one, _ in samples(out.decode())["zov_device_info"]],
                             [clean(record["name"]) for record in records])
        self.each(check, "prometheus", "--metrics", "all")

    @needs("dot", "xmllint")
    def test_dot(self):
        def check(_, out):
            pipe(pipe(out, "dot", "-Tsvg"), "xmllint", "--noout", "-", out=b"")
        self.each(check, "dot")

    def test_table_and_macs(self):
        def check_table(records, out):
            self.assertEqual(out.count(b"\n"), 1 + len(records))

        def check_macs(records, out):
            macs = ",".join(fields.shown(record["mac"]) for record in records)
            self.assertEqual(out.decode(), f"{macs}\n")
        self.each(check_table, "table")
        self.each(check_macs, "macs")


print(f"ZOV_SEED={SEED}", flush=True)
main()
