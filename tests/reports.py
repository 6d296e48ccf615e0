# SPDX-License-Identifier: MIT
"""Lists of devices through wtps, wtpflag and online, every byte compared with what fields.txt says.

The first argument is the program; ZOV_LONG=1 asks for more lists.
"""
import itertools
import os
import random
import re
import struct

import fields
from harness import Case, first_difference, main, needs, program, run

LONG = 20 if os.environ.get("ZOV_LONG") else 1
FILTERS = {"--unmanaged": 1, "--managed": 2, "--join": 4, "--no_cfg": 8,
           "--no_stainf": 32}  # bits they clear
FORMS = [  # options, filter word, form, choices
    ("", 63, "text"), ("--basic", 39, "text", "basic"), ("--password", 63, "text", "password"),
    ("--basic --password", 39, "text", "basic", "password"), ("--no_cfg", 55, "text"),
    ("--json", 63, "json"), ("--json --basic", 39, "json", "basic"),
    ("--json --password", 63, "json", "password"), ("--no_stainf --json", 31, "json"),
    ("--basic --password --json", 39, "json", "basic", "password"), ("--breif", 55, "brief"),
    ("--breif --basic --password", 39, "brief"), ("--fwresult", 39, "results"),
    ("--json --fwresult --password", 39, "results")]
TEXT, JSON = FORMS[2], FORMS[7]


def request(word, macs=()):
    return (">", struct.pack(">BIH", 1, word, len(macs)) + b"".join(macs))


class Reports(Case):
    def check(self, records, forms, **options):
        """These records, printed in these forms."""
        for words, word, *shape in forms:
            reply, expected = fields.reply(records), fields.report(records, *shape)
            typed = ["wtps", *words.split()]
            outcome = run(typed, [request(word), ("<", reply)], **options)
            with self.subTest(words=words):
                if "timed out" in outcome.complaint:  # what it reads amiss shows when the list ends
                    longer = run(typed, [request(word), ("<", reply + bytes([1]) * 65536)])
                    differs = first_difference(longer.out, expected)
                    self.fail(f"{outcome.complaint}; the report {differs}")
                self.expect(outcome, expected)

    def test_random_lists_in_every_form(self):
        for seed in range(16 * LONG):
            maker = fields.Maker(seed)
            with self.subTest(seed=seed):
                self.check([maker.record() for _ in range(seed % 6)], FORMS)

    def test_every_kind_security_mode_and_data_rate(self):
        for cfg, detail in itertools.product((False, True), (False, True)):
            self.check([fields.Maker(9).record(kind, cfg, detail)
                        for kind in (0, 1, 2, 3, 4, 5, 255)], (TEXT, JSON))
        records = [fields.rich(3, mode) for mode in range(len(fields.RATES))]
        for mode, (record, rate) in enumerate(zip(records, fields.RATES)):
            radio = record["wtp_cfg"][0]["radio"][0]
            radio["data_rate"], radio["wlan"][0]["sec_mode"] = rate % 2 ** 32, mode
        self.check(records, (TEXT, JSON))

    def test_every_byte_and_long_texts(self):
        lengths = (2047, 2048, 2049, 65535)
        for text in (bytes(range(1, 256)), *(b'"' * length for length in lengths)):
            self.check([fields.rich(3, words=[text])], (TEXT, JSON))

    def test_counts_of_more_than_one_byte(self):
        tried = 0
        for kind in (3, 2):
            for n, (_, _, bits) in enumerate(lists(fields.rich(kind))):
                record = fields.rich(kind)
                values, name, _ = list(lists(record))[n]
                items = enumerate(values[name] * min(300, 2 ** bits - 1))
                values[name] = [{**item, "#": i + 1, "po": i} if isinstance(item, dict) else item
                                for i, item in items]
                record["sw_max_port"] = len(record.get("switch_hw_port", []))
                self.check([record], (TEXT, JSON))
                tried += 1
        self.assertEqual(tried, 22)

    def test_long_lists_and_replies_in_pieces(self):
        records = [fields.Maker(1).record(kind % 5) for kind in range(300)]
        self.check(records, FORMS)
        self.check(records[:5], (TEXT, JSON), pieces=True)
        script = [request(63), ("<", fields.reply(records))]
        self.expect(run(["wtps"], script, output="/dev/full"))  # what cannot be written is lost


class Requests(Case):
    def test_filters_and_conflicts(self):
        chance = random.Random(1)
        choices = [*FILTERS, "--basic", "--json", "--breif", "--fwresult", "--password"]
        sets = [few for n in (0, 1, 2) for few in itertools.combinations(choices, n)]
        sets += [[word for word in choices if chance.random() < 0.4] for _ in range(150)]
        for words in map(set, sets):
            word = 63 - sum(FILTERS.get(option, 0) for option in words)
            word |= 3 if {"--managed", "--unmanaged"} <= words else 0
            word &= ~(24 if {"--basic", "--fwresult"} & words else 8 if "--breif" in words else 0)
            forms = {"--fwresult": "results", "--json": "json", "--breif": "brief"}
            form = next((form for option, form in forms.items() if option in words), "text")
            conflict = next((pair for pair in (("json", "breif"), ("basic", "no_cfg"))
                             if {f"--{name}" for name in pair} <= words), None)
            typed = ["wtps", *chance.sample(sorted(words) * 2, len(words) * 2)]
            with self.subTest(words=typed):
                if conflict:
                    refusal = "ERROR: --{} cannot be specified with --{}.\n".format(*conflict)
                    self.expect(run(typed), err=refusal.encode())
                else:
                    script = [request(word), ("<", bytes([chance.randrange(1, 256)]))]
                    self.expect(run(typed, script), fields.report([], form))

    def test_lists_of_addresses(self):
        many = [f"00112233{n:04x}" for n in range(0x4455, 0x4455 + 300)]
        for text, *macs in (
                ("00:11:22:aa:BB:cC", "001122aabbcc"), ("0:1:2:3:4:5", "000102030405"),
                ("",), (",,",), ("fE:ff:ff:ff:f:0", "feffffff0f00"),
                (",00:11:22:33:44:55,,00:11:22:33:44:56,0:11:22:33:44:55,", *many[:2]),
                (" 0:11:22:33:44:55junk:66, 0x0:0x11:22:33:44:56", *many[:2]),
                ("0000:0011:22:33:44:00055;2:0:0:0:0:1", many[0]),
                (",".join(f"0:11:22:33:{mac[8:10]}:{mac[10:]}" for mac in many), *many)):
            with self.subTest(text=text):
                script = [request(63, list(map(bytes.fromhex, macs))), ("<", b"\1")]
                self.expect(run(["wtps", "--json", "--mac", "2:2:2:2:2:2", "--mac", text], script),
                            b'"wtp_list":[]\n')
        for text in (" ", *"""00:11:22:33:44 00:11:22:33:44:100 00:11:22:33:44:zz 0:0:0:0:0:0
                     -1:2:3:4:5:6 01:00:5e:00:00:01 ff:ff:ff:ff:ff:ff 00-11-22-33-44-55 001122334455
                     2:0:0:0:0:1,3:0:0:0:0:1 x,2:0:0:0:0:1 2:0:0:0:0:1,2:0:0:0:0""".split()):
            with self.subTest(text=text):
                self.expect(run(["wtps", "--mac", text, "--basic", "--no_cfg", "--wait", "1"]),
                            err=f"ERROR: Invalid --mac argument '{text}'.\n".encode())

    def test_counting_commands(self):
        for seed in range(20 * LONG):
            chance, maker = random.Random(seed), fields.Maker(seed, counts=(0, 1), macs=(0, 1))
            values = {"upg_img": [0, 1, 255], "state": [0, 5, 9], "sub_state": [0, 4, 5, 9]}
            records = [maker.record() | {name: chance.choice(few) for name, few in values.items()}
                       for _ in range(seed)]
            reply = ("<", fields.reply(records))
            flagged = [record for record in records if record["upg_img"]]
            waiting = sum(record["sub_state"] == 9 for record in flagged)
            offline = sum(record["state"] == record["sub_state"] == 0 for record in flagged)
            upgrading = sum(record["sub_state"] == 4 or record["upg_img"] > 0 for record in records)
            online = sum(record["state"] == 5 for record in records)
            waits = f"Waiting WTPs={waiting}\nAll WTPs={len(flagged)}\nOffline WTPs={offline}\n"
            for words, word, expected in (
                    ("wtpflag --flag 1", 15, waits), ("wtpflag --flag 2", 15, f"{upgrading}\n"),
                    ("online", 7, f"online WTP: {online}/{len(records)}\n")):
                self.expect(run(words.split(), [request(word), reply]), expected.encode())


def lists(record):
    """Every list of a record: the structure that holds it, its name, the bits of its count."""
    def below(sections, values):
        for kind, name in itertools.chain(*map(fields.wire_fields, sections)):
            if re.match(r"\??(list|macs|hosts)", kind):
                yield values, name, int(re.sub(r"\D", "", kind) or 32)
                for item in filter(lambda item: isinstance(item, dict), values[name]):
                    yield from below([fields.child(sections[0], name)], item)
    status, cfg = {3: ("record/ap", "wtp_cfg/ap"),
                   2: ("record/status", "wtp_cfg/switch")}[record["wtp_type"]]
    yield from below([status], record)
    yield from below(["wtp_cfg", cfg], record["wtp_cfg"][0])


def promised(record, values, name, count, bits):
    """What comes of a reply that ends right behind this count of a record's list."""
    key = "sw_max_port" if name == "switch_hw_port" else f"#{name}"
    one = fields.reply([record], b"")
    values[key] = count
    reply = fields.reply([record], b"")
    values[key] = 1
    begin = next(at for at, pair in enumerate(zip(one, reply)) if pair[0] != pair[1])
    return run(["wtps"], [request(63), ("<", reply[:begin + bits // 8]), ("x",)])


class TruncatedReplies(Case):
    def test_every_cut(self):
        for kind, words, word in ((3, ["--json"], 63), (2, [], 63), (1, ["--breif"], 55)):
            whole = fields.reply([fields.rich(kind)])
            for cut in range(len(whole)):
                with self.subTest(kind=kind, cut=cut):
                    script = [request(word), ("<", whole[:cut]), ("x",)]
                    self.expect(run(["wtps", *words], script), status=1)
        for words, word in (("online", 7), ("wtpflag --flag 1", 15), ("wtps --breif", 55)):
            for cut in (1, len(whole) // 2, len(whole) - 1):
                script = [request(word), ("<", whole[:cut]), ("x",)]
                self.expect(run(words.split(), script), status=1)

    @needs(memory_of=program())
    def test_counts_that_promise_too_much(self):
        """A count beyond what comes ends as a cut reply does, or for want of memory."""
        for kind in (3, 2):
            record = fields.rich(kind)
            for values, name, bits in lists(record):
                for count in (2 ** bits - 1, 2 ** (bits - 1) - 1):
                    if name == "lan_port" and count == 2 ** 32 - 1:
                        continue  # a number of LAN ports below zero is none
                    outcome = promised(record, values, name, count, bits)
                    with self.subTest(name=name, count=count):
                        if count >= 2 ** 31:  # no machine has such a table
                            which = b"(linkCount=-1)" if name == "link" else b""
                            self.assertEqual(outcome.err, b"ERROR: Out of memory" + which + b"\n")
                        self.assertRegex(outcome.err, rb"^(ERROR: Out of memory(\(.*\))?\n)?$")
                        self.expect(outcome, err=outcome.err, status=1)


if __name__ == "__main__":
    main()
