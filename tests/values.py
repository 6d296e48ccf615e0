# SPDX-License-Identifier: MIT
"""Random values of every form of setting, good and nearly good: values.py ZOV

zov-check passes nothing that zov refuses or sends as another value than the text shows, and reports
what zov does; the schemas differ from it only as zov-cfg(5) tells. ZOV_SEED repeats a run.
"""
import collections
import itertools
import json
import os
import random
import re
import tempfile
from pathlib import Path

import settings
from harness import Case, call, generated, main, needs, run, tool
from settings import AP, LISTS, TABLE

SEED = int(os.environ.get("ZOV_SEED") or random.SystemRandom().randrange(10**6))
PER_FORM = 2500 if os.environ.get("ZOV_LONG") else 250  # values for each kind of device
# Texts to begin with, what is put into them, and values of other types and spellings.
POOL = {"ipv4": "1.2.3.4 010.001.0.255 199.249.99.250 256.1.1.1 1.2.3 1.2.3.4.5 0010.0.0.1 none",
        "rate": "auto MCS0 MCS31 MCS32 VHTMCS9 VHTMCS10 MCS7.0 MCS-8 5.5M 5.50M 5.M .5M 54.0M 32M",
        "ipset": "10.0.0.1/255.0.0.0/10.0.0.2 0.0.0.0/0.0.0.0/0.0.0.0 1.2.3.4/255.0.0.0/0.0.0.0",
        "macs": "2:0:0:0:0:1 FE:ff:fF:0a:00:a 02:A2:00:00:00:01 0:0:0:0:0:0 3:0:0:0:0:1 2::0:0:0:1"}
POOL["server"] = POOL["ipv4"]
ODD = [*" \n\tx-+.0/:M\"\\'\0\x7fé€😀\u0661\u2028", "0x", "/24", ".0", "00", "1"]
OTHER = [*"true null 1 -1 1.0 -0 0.5 1e0 [] [1] {} - 01 [[]] [1,] \"\\x\" \"\udcff\" \"1\"".split(),
         '{"x":1}', '{"comment":1}', '""', "9" * 19, "1" + "0" * 19, '["x",null]', '"x\n"',
         r'"\ud800"', r'"\udead-------"']
STRICTER = "is sent as|ends at its NUL|This is no JSON|has to be a"  # zov sends such a value
# Words of zov-cfg(5) about a difference, members that show it, whether the schema passes them, and
# whether it can be why a setting with these texts is judged differently.
DIFFERENCES = [
    ("fraction or exponent", '"bandsteer":1.0', True, lambda row, texts: row.is_number),
    ("surrogate", r'"name":"\ud800"', True,
     lambda row, texts: any(re.search("[\ud800-\udfff]", one) for one in texts)),
    ("counts characters", '"radio":[{"wlan":[{"ssid":"%s"}]}]' % ("é" * 17), True,
     lambda row, texts: any(len(one.encode()) > (row.high or 65535) for one in texts)),
    ("fewer characters", '"radio":[{"mesh":{"wpa_key":"éééé"}}]', False,
     lambda row, texts: len(texts[0]) < row.low <= len(texts[0].encode())),
    ("fit together", '"ipv4":"10.0.0.1/255.0.255.0/0.0.0.0"', True,
     lambda row, texts: row.form == "ipset"),
    ("two spellings", '"radio":[{"wlan":[{"acl":{"mac":["2:0:0:0:0:a","2:0:0:0:0:A"]}}]}]', True,
     lambda row, texts: row.form == "macs" and len({*texts}) > len(
         {re.sub(r"\b0+\B", "", one.lower()) for one in texts})),
    ("given twice", '"name":"a","name":"a"', True, None),
    ("same port", '"poe_port":[{"port":1},{"port":1}]', True, None),
    ("63 levels", '"name":"a","comment":' + "[" * 62 + "]" * 62, True, None),
    ("too large", '"name":"a","comment":1e999', True, None)]


def random_text(chance, row):
    """A text for a setting, which is good as often as not."""
    if row.form in POOL:
        made = re.sub("[0-9]", lambda digit: chance.choice([digit[0]] * 90 + [*"0123456789"]),
                      chance.choice(POOL[row.form].split()))
    else:
        letter, high = chance.choice("aaé€😀"), row.high or chance.choice([9] * 20 + [65535])
        bound = chance.choice([row.low, high, chance.randint(row.low, high)])
        made = letter * ((bound + chance.randint(-3, 3)) // len(letter.encode()))
    for _ in range(chance.choice([0, 0, 0, 0, 1, 2])):
        at, odd = chance.randint(0, len(made)), chance.choice(ODD)
        made = chance.choice([made[:at] + odd + made[at:], made + odd, odd + made, made.swapcase(),
                              made[:at] + made[at + 1:]])
    return made


def random_value(chance, row):
    """A value for a setting, as JSON has it: texts with each character escaped or not."""
    def spelled(text):
        return '"' + "".join(chance.choice([
            json.dumps(c)[1:-1], json.dumps(c, ensure_ascii=False)[1:-1],
            f"\\u{ord(c):04X}" if c < "\U00010000" else c]) for c in text) + '"'
    if chance.random() < 0.1:
        return chance.choice(OTHER)
    if row.is_number:
        bound = chance.choice([row.low, row.high, chance.randint(row.low, row.high)])
        return str(bound + chance.choice([0, 0, 0, 0, 1, -1, 2**16, 2**32, -2**32, 2**63, 2**64]))
    if row.form not in LISTS:
        return spelled(random_text(chance, row))
    few = [random_text(chance, row) for _ in range(chance.choice([0, 1, 1, 2, 3]))]
    few += [few[0].swapcase()] if few and chance.random() < 0.2 else []
    if chance.random() < 0.02:
        few = [f"2:0:0:0:{n >> 8}:{n & 255:x}" for n in range(chance.randint(254, 257))]
    return "[" + ",".join(map(spelled, few)) + "]"


def document(*pairs):
    """The text of a document with these (row, value as JSON has it)."""
    marks = ((row.path, f"<{n}>") for n, (row, _) in enumerate(pairs))
    text = json.dumps(settings.with_ports(settings.document(*marks)))
    for n, (row, value) in enumerate(pairs):
        text = text.replace(f'["<{n}>"]' if row.form in LISTS else f'"<{n}>"', value)
    return text


def rate(text):
    """The code of a data rate: n + 1 for MCSn, n + 101 for VHTMCSn, else the kbit/s."""
    _, vht, index, whole, part = re.fullmatch(
        "(auto|(VHT)?MCS([0-9]+)|([0-9]+)[.]?([0-9])?0*M)", text).groups()
    if index:
        return int(index) + (101 if vht else 1)
    return 0 if text == "auto" else 1000 * int(whole) + 100 * int(part or 0)


def without_value(text):
    """A message without the value or the name of the file that it is about."""
    text = re.sub("config file [^ ]*[.].*", "config file", text.removeprefix("ERROR: ").strip())
    return re.sub("'.*' ", "", text, flags=re.S) or "An object without members."


@needs(modules=["jsonschema"])
class Values(Case):
    def judged(self, kind, texts):
        """Of each document: whether the schema passes it, and what zov-check reports."""
        from jsonschema import Draft202012Validator
        name, valid = "ap" if kind == AP else "switch", []
        schema = json.loads(generated(f"wtp_cfg-{name}.schema.json").read_text())
        validator = Draft202012Validator(schema)
        memory = "/dev/shm" if os.path.isdir("/dev/shm") else None  # many files are made fast there
        with tempfile.TemporaryDirectory(dir=memory) as folder:
            for n, text in enumerate(texts):
                raw = text.encode(errors="surrogateescape")
                Path(folder, f"{n:05}").write_bytes(raw)
                try:
                    valid.append(validator.is_valid(json.loads(raw)))
                except ValueError:
                    valid.append(False)
            status, out, err = call(tool("zov-check"), "--format", "json", "--type", AP - kind,
                                    *os.listdir(folder), cwd=folder)
        self.assertEqual((err, status), ("", int('"error"' in out)))
        reports = [[] for _ in valid]
        for one in json.loads(out)["diagnostics"]:
            reports[int(one["file"])] += [one["message"]] * (one["severity"] == "error")
        return zip(valid, reports)

    def test_random_values(self):
        print(f"ZOV_SEED={SEED}", flush=True)
        chance, seen = random.Random(SEED), collections.Counter()
        for kind, rows in TABLE.items():
            good, bad, made = collections.defaultdict(list), [], []
            for form in sorted({row.form for row in rows.values()}) * PER_FORM:
                row = chance.choice([row for row in rows.values() if row.form == form])
                made.append((row, random_value(chance, row)))
            judged = self.judged(kind, [document(pair) for pair in made])
            for (row, value), (valid, reports) in zip(made, judged):
                seen[row.form, not reports] += 1
                (bad if reports else good[row]).append((row, value, reports))
                if valid == bool(reports):
                    texts = json.loads(value)
                    texts = texts if isinstance(texts, list) else [texts]
                    self.assertTrue(any(when and passes == valid and when(row, texts) for
                                        _, _, passes, when in DIFFERENCES), (row, value, reports))
            for few in itertools.zip_longest(*good.values()):
                few = [one[:2] for one in few if one]
                settings.RATES.update((json.loads(value), rate(json.loads(value)))
                                      for row, value in few if row.form == "rate")
                text = document(*few)
                steps = settings.script(kind, settings.Walk(kind).walk(json.loads(text)))
                self.expect(run(settings.words(kind), steps, files={"f": text.encode()}))
            for row, value, reports in chance.sample(bad, PER_FORM):
                raw = document((row, value)).encode(errors="surrogateescape")
                done = run(settings.words(kind), b"\0\0", files={"f": raw})
                if done.status == 0:  # it was sent
                    self.assertRegex(str(reports), STRICTER, raw)
                else:
                    self.assertEqual(done.received, b"\0", raw)
                    message = without_value(done.err.decode(errors="replace"))
                    self.assertIn(message, [*map(without_value, reports)], raw)
        self.assertEqual(len(seen), 20)  # 10 forms, each passed and refused
        self.assertGreater(min(seen.values()), PER_FORM // 10, seen)

    def test_differences(self):
        page = generated("zov-cfg.5").read_text()
        for words, members, passes, _ in DIFFERENCES:
            kind = settings.SWITCH if "poe_port" in members else AP
            [(valid, reports)] = self.judged(kind, ['{"wtp_cfg":{%s}}' % members])
            self.assertEqual((valid, bool(reports)), (passes, passes), members)
            self.assertIn(words, page)


main()
