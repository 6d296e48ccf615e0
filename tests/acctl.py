# SPDX-License-Identifier: MIT
"""exit and kill, without touching any process but children of this test: acctl.py ZOV

kill sees a fake ps that stands first in PATH, exit a pid file that names a child.
"""
import fcntl
import os
import resource
import signal
import tempfile
from pathlib import Path

from harness import Case, main, needs, option_words, run, start

PID_FILE = Path("/var/run/ac.pid")


class ProcessControl(Case):
    def setUp(self):
        folder = self.enterContext(tempfile.TemporaryDirectory(prefix="zov-acctl."))
        self.ps, self.path = Path(folder, "ps"), {"PATH": f"{folder}:{os.environ['PATH']}"}
        self.fake_ps("exit 9")
        self.start_victim()

    def start_victim(self):
        """A child that waits to be ended, a while."""
        self.victim = start(["sleep", "120"])
        self.addCleanup(self.victim.wait)
        self.addCleanup(self.victim.kill)

    def fake_ps(self, script):
        self.ps.write_text(f"#!/bin/sh\n{script}\n")
        self.ps.chmod(0o700)

    def list_processes(self, *lines):
        """What ps prints from now on."""
        self.ps.with_name("list").write_text("".join(line + "\n" for line in lines))
        self.fake_ps(f"cat {self.ps.with_name('list')}")

    def zov(self, *words, **options):
        return run(words, environment=self.path, **options)

    def kill(self, *lines, ends=True, **options):
        """One kill, with a ps that prints these lines; it ends the victim, or leaves it alone."""
        self.list_processes(*lines)
        self.expect(self.zov("kill", **options))
        if not ends:
            return self.assertIsNone(self.victim.poll(), lines)
        self.assertEqual(self.victim.wait(10), -signal.SIGKILL, lines)
        return self.start_victim()

    def test_kill_ends_the_first_process_that_is_the_controller(self):
        for command in ("/usr/sbin/ac -d", "ac -d", "x\tac -d", "12 ac 13 "):
            self.kill("  PID TTY      STAT   TIME COMMAND", "    1 ?        Ss     0:01 /sbin/init",
                      "  /usr/sbin/ac without-a-number ",
                      f" {self.victim.pid} ?  Ss  0:00 {command}",
                      " 99999999 ?  Ss  0:00 /usr/sbin/ac -d")
        for command in ("/usr/sbin/ac", "/usr/sbin/acx -d", "mac -d", "trac -d", "/ac\t-d",
                        "AC -d"):
            self.kill(f" {self.victim.pid} ?  Ss  0:00 {command}", ends=False)
        self.kill(f" {self.victim.pid} ? S 0:00 ac -d",
                  prepare=lambda: signal.signal(signal.SIGCHLD, signal.SIG_IGN))

    def test_kill_reads_the_first_number_of_the_line(self):
        bystander = self.victim
        self.start_victim()
        other, pid = bystander.pid, self.victim.pid
        # A name across two pieces of 511 characters is none; at the end of the first it is one.
        cut = [f"{other} ".ljust(before, "x") + "/ac -d" for before in (508, 509, 510)]
        self.kill(*cut, f" {other} ".ljust(511, "x") + "ac -d",
                  " 0 ? S 0:00 /usr/sbin/ac -d", f" -{'0' * 30} ac -d",
                  f" 99999999999 ? S 0:00 /usr/sbin/ac {other}",
                  f" {2**32 + other} ? S 0:00 /usr/sbin/ac -d", f" {'y' * 600} ac -d",
                  f" {pid} {'z' * 600} {other} {'z' * 600} /usr/sbin/ac -d")
        self.assertIsNone(bystander.poll())
        self.kill(f"{self.victim.pid} ".ljust(507, "x") + "/ac -d")
        for split in range(1, len(str(pid))):  # a number across pieces
            self.kill(f"{'-' * (511 - split)}{self.victim.pid} /usr/sbin/ac -d")

    def test_kill_with_a_list_that_cannot_be_written(self):
        self.list_processes(f" {self.victim.pid} ? S 0:00 /usr/sbin/ac -d")
        few = (resource.RLIMIT_NOFILE, (4, 4))
        outcome = self.zov("kill", prepare=lambda: resource.setrlimit(*few))
        self.assertEqual((outcome.status, outcome.out), (1, b""))
        self.assertRegex(outcome.err, rb"^ERROR: execute 'ps x > /tmp/zov\.ps\.\d+' error=512\n$")
        self.assertIsNone(self.victim.poll())

    def test_kill_reports_a_command_that_fails(self):
        for script, message in (
                ("exit 3", r"ERROR: execute 'ps x > /tmp/zov\.ps\.\d+' error=768\n"),
                ('rm "$(readlink /proc/$$/fd/1)"', r"open /tmp/zov\.ps\.\d+ failed\n"),
                ("echo ' 99999999 ?  Ss  0:00 /usr/sbin/ac -d'",
                 r"(?s:.*\n)?ERROR: execute 'kill -9 99999999' error=256\n")):
            with self.subTest(script=script):
                self.fake_ps(script)
                outcome = self.zov("kill")
                self.assertRegex(outcome.err.decode(), f"^{message}$")
                self.expect(outcome, err=outcome.err)

    @needs(root=True)
    def test_exit_ends_the_process_of_the_pid_file(self):
        # The file is the machine's: one test at a time, and never instead of a real one.
        lock = os.open(PID_FILE.parent, os.O_RDONLY)
        self.addCleanup(os.close, lock)
        fcntl.flock(lock, fcntl.LOCK_EX)
        if PID_FILE.exists():
            self.skipTest(f"{PID_FILE} is there already")
        self.addCleanup(PID_FILE.unlink, missing_ok=True)
        PID_FILE.write_text(f"{self.victim.pid}\n")
        self.expect(self.zov("exit"))
        self.assertEqual(self.victim.wait(), -signal.SIGTERM)
        PID_FILE.unlink()
        outcome = self.zov("exit")
        self.expect(outcome, err=outcome.err, status=1)

    def test_neither_takes_options_or_does_without_a_controller(self):
        for command in ("exit", "kill"):
            self.expect(self.zov(command, absent=True), err=b"ERROR: AC is not running.\n")
            for option, words in option_words().items():
                if option in ("acserver", "acport"):
                    continue
                self.expect(self.zov(command, *words, "--json"),
                            err=f"ERROR: Unknown option --{option}.\n".encode())


main()
