# SPDX-License-Identifier: MIT
"""Everything that can fail around zov, failing in turn: torture.py ZOV_FAULTY

The program is built with faults.cpp, whose variables choose what fails. A case is a transcript: of
each command and form the one with the most bytes; and rich lists and configuration files.
"""
import atexit
import errno
import functools
import os
import re
import tempfile
from pathlib import Path

import fields
import settings
from harness import Case, main, run
from reports import request
from transcripts import Transcript, read_transcripts

FORMS = {"--json", "--breif", "--add", "--del", "--all", "--fwresult"}
FOLDER = tempfile.TemporaryDirectory(prefix="zov-fault.")
LOG = f"{FOLDER.name}/log"
atexit.register(FOLDER.cleanup)


def size_of(case):
    texts = [*(data for _, *steps in case.steps for data in steps), *(case.files or {}).values()]
    return sum(map(len, texts))


def case_of(place, words, steps, out=b"", files=None):
    """A case that stands in no transcript."""
    case = Transcript(place, [("", words)])
    case.steps, case.out, case.files = steps, out, files
    return case


@functools.cache
def cases():
    """What is played under every fault."""
    largest = {}
    for path in sorted(Path(__file__).with_name("transcripts").glob("*.txt")):
        for case in read_transcripts(path):
            form = (path.stem, *case.words[:1], *sorted(FORMS & set(case.words)))
            if case.words and case.status == 0 and not case.absent and size_of(case) < 10000:
                largest[form] = max(largest.get(form, case), case, key=size_of)
    for kind in (3, 2):
        records = [fields.rich(kind, counts=(2,), macs=(2,), words=[b"ab/"]) for _ in range(2)]
        for form, words in (("json", ["--json", "--password"]), ("text", ["--password"])):
            largest[form, kind] = case_of(form, ["wtps", *words],
                                          [request(63), ("<", fields.reply(records))],
                                          fields.report(records, form, "password"))
        rows = settings.TABLE[kind].values()
        document = settings.document(*((row.path, settings.extremes(row)[1]) for row in rows))
        script = settings.script(kind, settings.Walk(kind).walk(document))
        largest["cfg", kind] = case_of("settings", settings.words(kind), script,
                                       files={"f": settings.json.dumps(document).encode()})
    return list(largest.values())


class Torture(Case):
    def play(self, case, fault):
        """One run with this fault: what came of it, and whether it was met."""
        outcome = run(case.words, case.steps, files=case.files,
                      environment={"FAULT": fault, "FAULT_LOG": LOG})
        met = os.path.exists(LOG)
        if met:
            os.remove(LOG)
        self.assertEqual(outcome.left, [])
        self.assertLess(outcome.status, 128, f"{case.place}: ended by a signal with {fault}")
        return outcome, met

    def in_turn(self, call, error, check, more=()):
        """Plays every case with its first, second, ... call failing, until none is left to fail."""
        for case in [*cases(), *more]:
            number, met = 0, True
            while met:
                number += 1
                outcome, met = self.play(case, f"{call} {number} {error}")
                with self.subTest(place=case.place, words=case.words[:3], call=call, number=number):
                    if met:
                        check(case, outcome)
                    else:
                        self.expect(outcome, case.out, case.err, 0)

    def test_every_allocation_fails_in_turn(self):
        said = []

        def check(case, outcome):
            # What a device answered before stands before it.
            *before, last = outcome.err.decode().splitlines(True)
            self.assertTrue(case.err.startswith("".join(before).encode()), outcome.err)
            self.assertEqual((outcome.status, outcome.out, outcome.received[-1:]), (1, b"", b"\0"))
            said.append((re.sub(r"\d+|'.*'", "#", last), case.words[0]))
        # A reply that outgrows its first pages.
        records = [fields.rich(3, counts=(2,))] * 1000
        large = case_of("large", ["wtps", "--breif"], [request(55), ("<", fields.reply(records))],
                        fields.report(records, "brief"))
        self.in_turn("alloc", errno.ENOMEM, check, [large])
        self.assertGreater(len(said), 200)
        takes_list = {case.words[0] for case in cases() if "--mac" in case.words} - {"dbg", "nodc"}
        texts = {"Out of memory": "ac cfg fwlist mem online sh wtpflag wtps",
                 "Out of memory.": "cfg mem sh", "Out of memory(switchTopoDevCount)": "wtps",
                 "Out of memory(linkCount=#)": "wtps", "Invalid --client argument #.": "kick",
                 "Invalid --mac argument #.": " ".join(takes_list)}
        self.assertEqual(set(said), {
            (f"ERROR: {text}\n", command) for text, commands in texts.items()
            for command in commands.split()})

    def test_every_transfer_fails_in_turn(self):
        for call, message in (("send", "writing"), ("recv", "reading")):
            for error in (errno.ECONNRESET, errno.EPIPE):
                line = f"ERROR: {message} socket failed for reason: {os.strerror(error)}\n".encode()

                def check(case, outcome):
                    # Only the goodbye may fail without consequences.
                    whole = call == "send" and outcome.err == case.err + line
                    expected = (0, case.out) if whole and outcome.status == 0 else (1, b"")
                    self.assertTrue(outcome.err.endswith(line), outcome.err)
                    self.assertEqual((outcome.status, outcome.out), expected)
                self.in_turn(call, error, check)

    def test_sockets_files_and_short_transfers(self):
        case = case_of("online", ["online"], [request(7), ("<", b"\1")], b"online WTP: 0/0\n")
        password = case_of("password", settings.words(settings.AP), [], files={
            "f": b'{"wtp_cfg":{"password":"x"}}'})
        for played, fault, out, err, status in (
                (case, f"socket 1 {errno.EMFILE}", b"", b"ERROR: create socket failed.", 1),
                (case, f"close 1 {errno.EIO}", case.out, b"ERROR: : Input/output error", 0),
                *((password, f"open {number} {errno.EMFILE}", b"",
                   b"ERROR: %s '/tmp/zov.PID.%s.tmp' failed." % what, 1) for number, what in
                  enumerate(((b"create", b"pwd"), (b"create", b"md5"), (b"write", b"pwd")), 1))):
            outcome, met = self.play(played, fault)
            shown = re.sub(rb"(zov\.)[0-9a-f]+", rb"\1PID", outcome.err)
            self.assertEqual((met, outcome.out, shown, outcome.status),
                             (True, out, err + b"\n", status))
        for case in cases():
            outcome, met = self.play(case, "short")
            with self.subTest(place=case.place):
                self.assertTrue(met)
                self.expect(outcome, case.out, case.err, 0)


main()
