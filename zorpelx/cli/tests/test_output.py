"""Output files are the old ones or the new ones, whatever happens while they are written.

A shim (filewatch.c) stops the program before every single file operation, or lets it fail.
"""

import errno
import os
import resource
import signal
import subprocess
import unittest

from calls import ZORPELX, Case, are_gone, children_of, random_hypergraph, wait_for

OPERATIONS = ["create", "write", "mode", "sync file", "rename", "sync folder"]  # of each file
RENAME = OPERATIONS.index("rename")
PARTITION = ("partition", "fifo.hgr", "-k", "2", "-o", "a", "--json", "b", "-q")
CLEAN = ("lint", "fifo.hgr", "--fix", "a", "--map", "b", "-q")


@unittest.skipIf("ZORPEL_SANITIZED" in os.environ, "a sanitizer wants to be loaded first")
class Watched(Case):
    """Commands that write two files, a and b, both there before."""

    def setUp(self):
        super().setUp()
        self.example("fifo.hgr")

    def old_files(self):
        self.file("a", "old a\n")
        self.file("b", "old b\n")

    def watch(self, *words, old=True, **settings):
        """Runs zorpelx under the shim; returns the finished process and the operations."""
        log = self.folder / "log"
        log.unlink(missing_ok=True)
        shim = {f"FILEWATCH_{name.upper()}": str(value) for name, value in settings.items()}
        shim |= {"LD_PRELOAD": os.environ["ZORPELX_FILEWATCH"], "FILEWATCH_LOG": str(log)}
        if old:
            self.old_files()
        done = self.call(*words, env={**os.environ, **shim})
        operations = log.read_text().splitlines() if log.exists() else []
        log.unlink(missing_ok=True)
        return done, operations

    def whole_run(self, words):
        """What an undisturbed run writes: the contents of a and b."""
        done, operations = self.watch(*words)
        self.assertEqual(done.returncode, 0, done.stderr)
        place = os.path.realpath(self.folder)
        named = [line.replace(f"rename {place}/", "rename ") for line in operations]
        steps = OPERATIONS[:RENAME], OPERATIONS[RENAME + 1 :]
        expected = [*steps[0], "rename a", *steps[1], *steps[0], "rename b", *steps[1]]
        self.assertEqual(named, expected)
        return self.text("a"), self.text("b")

    def check_files(self, new, renamed):
        """Files of which so many were renamed hold the new content, the others the old one."""
        old = ("old a\n", "old b\n")
        for i, name in enumerate("ab"):
            wanted = new[i] if i < renamed else old[i]
            if name == "b" and renamed == 2 and "seconds" in wanted:
                self.assertIn('"seconds"', self.text(name))  # which differ
            else:
                self.assertEqual(self.text(name), wanted)

    def test_files_are_synced_before_they_are_renamed(self):
        self.whole_run(PARTITION)
        self.whole_run(CLEAN)

    def test_killed_before_any_operation(self):
        for words in (PARTITION, CLEAN):
            new = self.whole_run(words)
            for n in range(2 * len(OPERATIONS)):
                done, _ = self.watch(*words, kill=n + 1)
                self.assertEqual(done.returncode, -signal.SIGKILL)
                self.check_files(new, (n > RENAME) + (n > RENAME + len(OPERATIONS)))
                for name in self.names():
                    if name not in ("a", "b", "fifo.hgr"):  # a kill leaves the temporary file
                        (self.folder / name).unlink()

    def test_no_file_or_a_whole_one_where_there_was_none(self):
        for words in (PARTITION, CLEAN):
            new = self.whole_run(words)
            for n in range(2 * len(OPERATIONS)):
                for how in ({"kill": n + 1}, {"fail": n + 1, "error": errno.ENOSPC}):
                    for name in self.names():
                        if name != "fifo.hgr":
                            (self.folder / name).unlink()
                    self.watch(*words, old=False, **how)
                    self.assertEqual((self.folder / "a").exists(), n > RENAME)
                    if n > RENAME:
                        self.assertEqual(self.text("a"), new[0])
                    if (self.folder / "b").exists():
                        self.assertEqual(self.text("b").split()[:20], new[1].split()[:20])
                        self.assertEqual(len(self.text("b").split()), len(new[1].split()))

    def test_any_operation_fails(self):
        for words in (PARTITION, CLEAN):
            new = self.whole_run(words)
            for n in range(2 * len(OPERATIONS)):
                operation = OPERATIONS[n % len(OPERATIONS)]
                error = errno.ENOSPC if operation == "write" else errno.EIO
                done, _ = self.watch(*words, fail=n + 1, error=error)
                if operation == "sync folder":  # not every file system can do it
                    self.assertEqual(done.returncode, 0, done.stderr)
                    self.check_files(new, 2)
                else:
                    self.assertEqual(done.returncode, 5, operation)
                    self.assertIn(os.strerror(error), done.stderr)
                    self.check_files(new, n // len(OPERATIONS))
                self.assertEqual(self.names(), ["a", "b", "fifo.hgr"])

    def test_writes_that_take_little_at_a_time(self):
        new = self.whole_run(CLEAN)
        done, operations = self.watch(*CLEAN, short=100)
        self.assertEqual(done.returncode, 0)
        self.assertGreater(operations.count("write"), 20)
        self.check_files(new, 2)

    def test_an_interrupted_write_is_repeated(self):
        new = self.whole_run(CLEAN)
        done, operations = self.watch(*CLEAN, fail=2, error=errno.EINTR)
        self.assertEqual((done.returncode, operations.count("write")), (0, 3))
        self.check_files(new, 2)


class Whole(Case):
    """The output file is the old one or the new one, whatever happens."""

    def setUp(self):
        super().setUp()
        self.file("out", "old\n")

    def test_disk_full(self):
        def cap():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000))

        self.example("mult16.hgr")
        words = ("partition", "mult16.hgr", "-k", 2, "-o", "out")
        self.fails(5, os.strerror(errno.EFBIG), *words, preexec_fn=cap)
        self.assertEqual(self.text("out"), "old\n")
        self.assertEqual(self.names(), ["mult16.hgr", "out"])

    def test_killed(self):
        self.file("g.hgr", random_hypergraph(3000, 6000))
        words = [ZORPELX, "partition", "g.hgr", "-k", "8", "-o", "out", "--runs", "1000"]
        run = subprocess.Popen(words, cwd=self.folder)
        workers = wait_for(lambda: children_of(run))
        run.kill()
        run.wait()
        wait_for(lambda: are_gone(workers))
        self.assertEqual(self.text("out"), "old\n")

    def test_permissions_and_links_stay(self):
        self.example("fifo.hgr")
        (self.folder / "out").chmod(0o640)
        (self.folder / "link").symlink_to("out")
        self.run_ok("partition", "fifo.hgr", "-k", 2, "-o", "link")
        self.assertTrue((self.folder / "link").is_symlink())
        self.assertEqual((self.folder / "out").stat().st_mode & 0o777, 0o640)
        self.assertEqual(len(self.text("out").split()), 385)

    def test_a_link_to_what_is_not_there_yet_is_followed(self):
        self.example("fifo.hgr")
        (self.folder / "inner").mkdir()
        (self.folder / "inner" / "second").symlink_to("new")
        (self.folder / "first").symlink_to("inner/second")
        self.run_ok("partition", "fifo.hgr", "-k", 2, "-o", "first")
        self.assertEqual(len(self.text("inner/new").split()), 385)
        self.assertTrue((self.folder / "first").is_symlink())
        self.assertTrue((self.folder / "inner" / "second").is_symlink())

    def test_links_that_lead_nowhere(self):
        self.example("fifo.hgr")
        (self.folder / "lost").symlink_to("no/such/folder")
        (self.folder / "round").symlink_to("round")
        words = ("partition", "fifo.hgr", "-k", 2, "-o")
        self.fails(5, os.strerror(errno.ENOENT), *words, "lost")
        self.fails(5, os.strerror(errno.ELOOP), *words, "round")
        self.assertEqual(self.names(), ["fifo.hgr", "lost", "out", "round"])

    def test_no_input_is_overwritten_and_no_output_twice(self):
        self.example("fifo.hgr")
        (self.folder / "link").symlink_to("fifo.hgr")
        self.file("fix", "-1\n" * 385)
        words = ("partition", "fifo.hgr", "-k", 2)
        for name in ("fifo.hgr", "link", "./fifo.hgr"):
            self.fails(2, f"{name} is read, and would be overwritten", *words, "-o", name)
        self.fails(2, "fix is read", *words, "--fix", "fix", "--json", "fix")
        self.fails(2, "new would be written twice", *words, "-o", "new", "--json", "new")
        self.fails(2, "would be written twice", *words, "-o", "out", "--json", "./out")
        self.fails(2, "would be written twice", "lint", "fifo.hgr", "--fix", "a", "--map", "a")
        self.fails(2, "fix is read", "lint", "fifo.hgr", "fix", "--fix", "fix")
        self.run_ok(*words, "-o", "/dev/null", "--json", "/dev/null")

    def test_lint_may_mend_a_file_in_its_place(self):
        self.file("g.hgr", "2 3\n1 2 2\n3 1\n")
        self.run_ok("lint", "g.hgr", "--fix", "g.hgr")
        self.assertEqual(self.text("g.hgr"), "2 3\n1 2\n3 1\n")

    def test_new_files_obey_the_umask(self):
        self.example("fifo.hgr")
        self.run_ok("partition", "fifo.hgr", "-k", 2, "-o", "new", umask=0o027)
        self.assertEqual((self.folder / "new").stat().st_mode & 0o777, 0o640)


if __name__ == "__main__":
    unittest.main()
