# SPDX-License-Identifier: MIT
"""Runs zov-export, and makes records with hostile texts."""
import json
import re

import fields
from harness import call, tool

HOSTILE = [
    b"", b"plain", b'say "x" \\ a/b', b"tab\tline\r\nbell\x07", b"cut\0off",
    b"\x1b]0;title\x07\x1b[31m", b"caf\xc3\xa9 \xf0\x9f\x98\x80", b"\xff\xfe", b"\xc0\xaf",
    b"\xed\xa0\x80x", b"\xe2\x82", b"\xf4\x90\x80\x80", b"\xc2\x9b31m\x7f", b'"' * 3000,
    b"\xe2\x82\xac" * 2000, b"=1+1", b"+x", b"@x", b"\tx", b"\rx", b"-a,b", b"#{x}\n",
    b"<&#0;>]]>\\N", b"\xef\xbf\xbe\xef\xbf\xbf",
    b'{"a b": [1, "\\u0041 \\" c", {}], "d":\n[ ]}', b'{"a":1}x', b"[1e5,-0.5, true ,null]",
    b"01", b"[1,]",
    b'"\xff"', b'"\x7f\xc2\x9b"', b"[" * 64 + b"]" * 64, b"[" * 65 + b"]" * 65, b"NaN", b"1.",
    b'["\\x"]', b"-", b'"\t"', b'"\\ud800"', b'"\\ud83d\\ude00"', b"1e999"]
HOSTS = [b"host", b'"q"/\\', b"a\x1f", b"\x7fb", b"c\x80"]
FOREIGN = re.compile(rb"[\0-\x09\x0b-\x1f\x7f]|\xc2[\x80-\x9f]")  # nothing of this may be written


def run(port, *options, **more):
    return call(tool("zov-export"), "--acport", port, *options, raw=True, **more)


def ok(port, *options):
    status, out, err = run(port, *options)
    assert (status, err) == (0, ""), (options, status, err)
    return out


def devices(port, *options):
    return [json.loads(line) for line in ok(port, "--format", "ndjson", *options).splitlines()]


def pipe(data, *words, out=None):
    """What a program makes of data, which has to be `out` if that is given, without a complaint."""
    status, made, err = call(*words, data=data, raw=True, timeout=300)
    assert (status, err) == (0, ""), (words[:2], status, err)
    assert out in (None, made), (words[:2], made)
    return made


def make_records(words, hosts, seed, kinds=(3, 2, 1)):
    """Records of these kinds; the same for the same seed but for their texts."""
    made = []
    for number, kind in enumerate(kinds):
        maker = fields.Maker(seed + number, counts=(0, 1, 2), words=words, hosts=hosts)
        record = maker.record(kind, cfg=True, detail=True)
        few = maker.random.choices(words, k=4)
        record["wtp_cfg"][0]["ac_list"] = [
            fields.Text(maker.random.choice(few)[:256].ljust(256, b"\0")) for _ in range(3)]
        made.append(record)
    return made


def samples(text):
    found = {}
    for name, labels, value in re.findall(r"^(\w+)(?:\{(.*)\})? (-?\d+)$", text, re.M):
        labels = {key: re.sub(r"\\(.)", r"\1", shown)
                  for key, shown in re.findall(r'(\w+)="((?:[^"\\]|\\.)*)"', labels)}
        found.setdefault(name, []).append((labels, int(value)))
    return found
