# SPDX-License-Identifier: MIT
"""Another user of the host prepares files, links, pipes and directories for companion tools:
other_users.py ZOV
"""
import os
import shutil
import stat
import struct
import tempfile
import unittest
from pathlib import Path

from controllers import AP, Controller
from harness import call, main, needs, tool

NOBODY = 65534  # plays the other user
ACCESS_LIST = "system.posix_acl_access"  # see acl(5): owner, nobody, group, mask, others
ENTRIES = (1, 7, 0, 2, 7, NOBODY, 4, 5, 0, 16, 7, 0, 32, 5, 0)
LET_NOBODY_WRITE = struct.pack("<I" + 5 * "HHI", 2, *ENTRIES)
OTHERS, WRITABLE = "it belongs to another user", "others can write to it"
UNREAD = "no process reads from it"


@needs(root=True)  # which can play another user
class Case(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory(prefix="zov-users.")))
        self.folder.chmod(0o1777)
        self.controller = self.enterContext(
            Controller("--aps", "2", "--switches", "1", "--others", "0"))
        self.addCleanup(os.umask, os.umask(0o022))

    def path(self, make, name="f", owner=NOBODY):
        """Something that `make` makes, and that belongs to the other user."""
        path = self.folder / name
        make(path)
        os.chown(path, owner, owner, follow_symlinks=False)
        return path

    def file(self, mode, owner=NOBODY):
        path = self.path(lambda path: path.write_text("old"), owner=owner)
        path.chmod(mode)
        return path

    def run_tool(self, name, *options, wrapper=(), **more):
        words = [*wrapper, tool(name), "--acport", self.controller.port, *options]
        return call(*words, **more)[::2]

    def export(self, *options, form="csv", **more):
        return self.run_tool("zov-export", "--format", form, *options, **more)

    def mode(self, path):
        state = path.lstat()
        return state.st_uid, oct(stat.S_IMODE(state.st_mode))


class Outputs(Case):
    def test_modes_of_others_are_not_taken_over(self):
        new = [(form, None, "0o600") for form in ("json", "ndjson", "cfg")]
        new += [(form, None, "0o644") for form in ("csv", "dot", "prometheus")]
        for form, there, expected in (
                ("csv", (0o6777, NOBODY), "0o644"), ("json", (0o666, NOBODY), "0o600"),
                ("csv", (0o6750, 0), "0o750"), ("ndjson", (0o640, 0), "0o640"), *new):
            with self.subTest(form=form, there=there):
                path = self.file(*there) if there else self.folder / "f"
                self.assertEqual(self.export("--output", path, form=form)[0], 0)
                self.assertEqual(self.mode(path), (0, expected))
                self.assertNotEqual(path.read_text(), "old")
                path.unlink()
        # A file of another group; with a second name, which others can give it; with a list.
        for group, more, expected in (
                (NOBODY, lambda path: None, "0o664"),
                (0, (self.folder / "other").hardlink_to, "0o600"),
                (0, lambda path: os.setxattr(path, ACCESS_LIST, LET_NOBODY_WRITE), "0o600")):
            path = self.file(0o664, owner=0)
            os.chown(path, 0, group)
            more(path)
            self.assertEqual(self.export("--output", path, form="json")[0], 0)
            self.assertEqual((self.mode(path), path.stat().st_gid), ((0, expected), group))
            path.unlink()

    def test_links_that_the_kernel_does_not_follow(self):
        victim = self.folder / "victim"
        link = self.path(lambda path: path.symlink_to(victim), "zov.csv")
        victim.write_text("kept")
        self.assertEqual(self.export("--output", link),
                         (1, f"zov-export: cannot open {link}: {OTHERS}\n"))
        self.assertEqual((victim.read_text(), link.is_symlink()), ("kept", True))
        os.chown(link, 0, 0, follow_symlinks=False)
        refusal = ["strace", "--quiet=all", "-o", "/dev/null", "-P", link,
                   "-e", "inject=openat:error=EACCES:when=2"]
        status, err = self.export("--output", link, wrapper=refusal,
                                  env={**os.environ, "ASAN_OPTIONS": "detect_leaks=0"})
        self.assertEqual((status, err),
                         (1, f"zov-export: cannot open {link}: Permission denied\n"))
        self.assertEqual((victim.read_text(), link.is_symlink()), ("kept", True))
        self.assertEqual(self.export("--output", link), (0, ""))
        self.assertEqual((victim.read_text()[:4], link.is_symlink()), ("mac,", True))

    def test_pipes_and_descriptors(self):
        pipe = self.path(os.mkfifo)
        reader = os.open(pipe, os.O_RDONLY | os.O_NONBLOCK)
        self.addCleanup(os.close, reader)
        self.assertEqual(self.export("--output", pipe),
                         (1, f"zov-export: cannot open {pipe}: {OTHERS}\n"))
        self.assertEqual(os.read(reader, 99), b"")
        os.chown(pipe, 0, 0)
        self.assertEqual(self.export("--output", pipe), (0, ""))
        self.assertEqual(os.read(reader, 4), b"mac,")
        alone = self.path(os.mkfifo, "alone", owner=0)
        self.assertEqual(self.export("--output", alone),
                         (1, f"zov-export: cannot open {alone}: {UNREAD}\n"))
        # Under sudo the terminal and the pipe are the login user's.
        for name in ("-", "/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"):
            ours, theirs = os.pipe()
            os.fchown(theirs, NOBODY, NOBODY)
            with open(ours, "rb") as shown, open(theirs, "wb") as out:
                done = self.export("--output", name, stdout=out, cwd=self.folder)
                self.assertEqual(done, (0, ""), name)
                out.close()
                self.assertEqual(shown.read(4), b"mac,")
        self.assertEqual(self.export("--output", "/dev/fd/77"),
                         (1, "zov-export: cannot write /dev/fd/77: Bad file descriptor\n"))

    def test_link_to_a_directory(self):
        place = self.folder / "place"
        place.mkdir()
        link = self.path(lambda path: path.symlink_to(place), "backup")
        for name in (f"{link}", f"{link}/"):
            self.assertEqual(self.export("--directory", name, form="cfg"),
                             (1, f"zov-export: cannot open {name}: {OTHERS}\n"))
        os.chown(link, 0, 0, follow_symlinks=False)
        self.assertEqual(self.export("--directory", link, form="cfg")[0], 0)
        self.assertEqual(len(os.listdir(place)), 3)

    def test_directories(self):
        for mode, owner, group, why in (
                (0o700, NOBODY, 0, OTHERS), (0o777, 0, 0, WRITABLE), (0o775, 0, NOBODY, WRITABLE),
                (0o1777, 0, 0, ""), (0o1775, 0, NOBODY, ""), (0o775, 0, 0, ""),
                (0o755, 0, NOBODY, ""), (None, 0, 0, ""), (0o755, 0, LET_NOBODY_WRITE, WRITABLE)):
            with self.subTest(mode=mode, owner=owner, group=group):
                directory = self.folder / "backup"
                if mode is not None:
                    directory.mkdir()
                    directory.chmod(mode)
                if group == LET_NOBODY_WRITE:
                    os.setxattr(directory, ACCESS_LIST, group)
                elif mode is not None:
                    os.chown(directory, owner, group)
                status, err = self.export("--directory", directory, form="cfg")
                files = list(directory.iterdir())
                if why:
                    expected = (1, f"zov-export: cannot use {directory}: {why}\n")
                    self.assertEqual((status, err, files), (*expected, []))
                else:
                    self.assertEqual((status, len(files)), (0, 3), err)
                    self.assertEqual(self.mode(directory), (0, oct(mode or 0o700)))
                    self.assertEqual({self.mode(file) for file in files}, {(0, "0o600")})
                shutil.rmtree(directory)


class Changes(Case):
    FAST = "--interval", "0.05", "--settle", "0", "--yes"

    def test_locks(self):
        name = f"zov-127.0.0.1-{self.controller.port}"
        refusal = ["strace", "--quiet=all", "-o", "/dev/null", "-P", f"/run/lock/{name}",
                   "-e", "inject=openat:error=EACCES"]
        refused = f"cannot open /run/lock/{name}: Permission denied; a lock is needed there"
        for folder, expected in ((None, (1, f"zov-rollout: {refused}\n")),
                                 ("tmp", (1, f"zov-rollout: {refused}\n")), (self.folder, (0, ""))):
            os.environ.pop("XDG_RUNTIME_DIR", None)
            variables = {"XDG_RUNTIME_DIR": str(folder)} if folder else {}
            status, err = self.run_tool(
                "zov-rollout", "--mac", AP, *self.FAST, wrapper=refusal,
                env={**os.environ, "ASAN_OPTIONS": "detect_leaks=0", **variables})
            self.assertEqual((status, err if status else ""), expected)
        self.assertTrue((self.folder / name).is_file())

    def test_undo_files(self):
        def change(*words):
            return self.run_tool("zov-apply", *words, *self.FAST,
                                 env={**os.environ, "XDG_STATE_HOME": str(self.folder)})
        file, state = self.file(0o600), self.path(os.mkdir, "zov")
        status, err = change("--undo", file, "--no-save")
        self.assertEqual((status, "that you alone can write to" in err), (2, True), err)
        for owner, status in ((NOBODY, 1), (0, 0)):
            os.chown(state, owner, owner)
            state.chmod(0o700)
            done, err = change("--mac", AP, "--set", "location=x")
            self.assertEqual((done, f"cannot use {state}: {OTHERS}" in err),
                             (status, status == 1), err)

    def test_logs(self):
        def roll_out(log):
            return self.run_tool("zov-rollout", "--mac", AP, *self.FAST, "--log", log)
        for path, why in ((self.path(os.mkfifo, "theirs"), OTHERS), (self.file(0o666), OTHERS),
                          (self.path(os.mkfifo, "alone", owner=0), UNREAD)):
            self.assertEqual(roll_out(path), (1, f"zov-rollout: cannot open {path}: {why}\n"))
            self.assertTrue(path.is_fifo() or path.read_text() == "old")
        log = self.folder / "log"
        self.assertEqual(roll_out(log)[0], 0)
        self.assertEqual(self.mode(log), (0, "0o600"))
        self.assertIn(" done, ", log.read_text())


main()
