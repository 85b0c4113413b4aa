# SPDX-License-Identifier: MIT
"""Output files are the old ones or the new ones, whatever happens while they are written.

A shim (filewatch.c) stops the program before every single file operation, or lets it fail; the
classes below it try every kind of place in every command.
"""

import errno
import os
import pathlib
import resource
import signal
import stat
import subprocess
import threading
import unittest

from calls import ZORPELX, Case, are_gone, children_of, random_hypergraph, wait_for

# Of two outputs that both stand there already, on a file system with nameless files and without.
OPENING = ["create", "mode"] * 2
FILLING = ["mode", "write", "sync file"] * 2
NAMING = ["link beside"] * 2
RENAMING = ["rename a", "rename b"]
SYNCING = ["sync folder"] * 2
OPERATIONS = OPENING + FILLING + NAMING + RENAMING + SYNCING
NAMED = ["create beside", "mode", "write", "sync file"] * 2 + RENAMING + SYNCING
NEW = ["create"] * 2 + ["write", "sync file"] * 2 + ["link a", "link b"] + SYNCING
PARTITION = ("partition", "fifo.hgr", "-k", "2", "-o", "a", "--json", "b", "-q")
CLEAN = ("lint", "fifo.hgr", "--fix", "a", "--map", "b", "-q")
NOBODY = 65534


@unittest.skipIf("ZORPEL_SANITIZED" in os.environ, "a sanitizer wants to be loaded first")
class Watched(Case):
    """Commands that write two files, a and b, both there before."""

    def setUp(self):
        super().setUp()
        self.example("fifo.hgr")

    def watch(self, *words, old=True, **settings):
        """Runs zorpelx under the shim; returns the finished process and the operations."""
        for name in self.names():
            if name != "fifo.hgr":
                (self.folder / name).unlink()
        log = self.folder / "log"
        shim = {f"FILEWATCH_{name.upper()}": str(value) for name, value in settings.items()}
        shim |= {"LD_PRELOAD": os.environ["ZORPELX_FILEWATCH"], "FILEWATCH_LOG": str(log)}
        if old:
            self.file("a", "old a\n")
            self.file("b", "old b\n")
        done = self.call(*words, env={**os.environ, **shim})
        operations = log.read_text().splitlines() if log.exists() else []
        log.unlink(missing_ok=True)
        return done, operations

    def whole_run(self, words, expected, **settings):
        """What an undisturbed run writes: the contents of a and b."""
        done, operations = self.watch(*words, **settings)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(operations, expected)
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

    def test_everything_is_synced_before_anything_is_renamed(self):
        for words in (PARTITION, CLEAN):
            self.whole_run(words, OPERATIONS)
            self.whole_run(words, NAMED, named=1)
            self.whole_run(words, NEW, old=False)

    def test_killed_before_any_operation(self):
        """What can't be held back leaves at most a file beside, between two renames."""
        for words in (PARTITION, CLEAN):
            for operations, more in ((OPERATIONS, {}), (NAMED, {"named": 1})):
                new = self.whole_run(words, operations, **more)
                for n in range(len(operations)):
                    done, _ = self.watch(*words, kill=n + 1, **more)
                    self.assertEqual(done.returncode, -signal.SIGKILL)
                    self.check_files(new, sum(n > operations.index(name) for name in RENAMING))
                    names = set(self.names()) - {"a", "b", "fifo.hgr"}
                    window = operations.index("rename a") - 2, operations.index("rename b")
                    if not more and not window[0] < n <= window[1]:
                        self.assertEqual(names, set(), n)

    def test_a_signal_before_any_operation_leaves_no_temporary_file(self):
        """Of those that can be held back; the program may end before or after, but not between."""
        for words in (PARTITION, CLEAN):
            for operations, more in ((OPERATIONS, {}), (NAMED, {"named": 1})):
                new = self.whole_run(words, operations, **more)
                for number in (signal.SIGHUP, signal.SIGTERM, signal.SIGXFSZ):
                    for n in range(len(operations)):
                        done, _ = self.watch(*words, kill=n + 1, signal=int(number), **more)
                        self.assertIn(done.returncode, (0, -number, 128 + number), n)
                        first_held = operations.index("link beside" if not more else NAMED[0])
                        self.check_files(new, 2 if n >= first_held or done.returncode == 0 else 0)
                        self.assertEqual(self.names(), ["a", "b", "fifo.hgr"])

    def test_any_operation_fails(self):
        for words in (PARTITION, CLEAN):
            for operations, more in ((OPERATIONS, {}), (NAMED, {"named": 1})):
                new = self.whole_run(words, operations, **more)
                for n, operation in enumerate(operations):
                    error = errno.ENOSPC if operation == "write" else errno.EIO
                    done, _ = self.watch(*words, fail=n + 1, error=error, **more)
                    self.assertEqual(self.names(), ["a", "b", "fifo.hgr"])
                    if operation == "sync folder":  # not every file system can do it
                        self.assertEqual(done.returncode, 0, done.stderr)
                        self.check_files(new, 2)
                        continue
                    self.assertEqual(done.returncode, 5, operation)
                    self.assertIn(os.strerror(error), done.stderr)
                    if operation == "rename b":
                        self.assertIn("; written in spite of it: a\n", done.stderr)
                        self.assertEqual(self.text("a"), new[0])
                    else:
                        self.assertNotIn("in spite", done.stderr)
                        self.assertEqual(self.text("a"), "old a\n")
                    self.check_second(words, n, operations)

    def check_second(self, words, n, operations):
        """b is the old one; or, for partition, JSON that tells of the failure."""
        if words is CLEAN or (operations is OPERATIONS and n < len(OPENING)):
            self.assertEqual(self.text("b"), "old b\n")
        else:
            self.assertIn('"message": "cannot write ', self.text("b"))

    def test_no_file_or_a_whole_one_where_there_was_none(self):
        for words in (PARTITION, CLEAN):
            new = self.whole_run(words, NEW, old=False)
            for n in range(len(NEW)):
                for how in ({"kill": n + 1}, {"fail": n + 1, "error": errno.ENOSPC}):
                    self.watch(*words, old=False, **how)
                    linked = n > NEW.index("link a")
                    self.assertEqual((self.folder / "a").exists(), linked)
                    if linked:
                        self.assertEqual(self.text("a"), new[0])
                    self.assertLessEqual(set(self.names()), {"a", "b", "fifo.hgr"})
                    if n > NEW.index("link b"):
                        self.assertEqual(len(self.text("b").split()), len(new[1].split()))

    def test_writes_that_take_little_at_a_time(self):
        new = self.whole_run(CLEAN, OPERATIONS)
        done, operations = self.watch(*CLEAN, short=100)
        self.assertEqual(done.returncode, 0)
        self.assertGreater(operations.count("write"), 20)
        self.check_files(new, 2)

    def test_an_interrupted_write_is_repeated(self):
        new = self.whole_run(CLEAN, OPERATIONS)
        n = OPERATIONS.index("write") + 1
        done, operations = self.watch(*CLEAN, fail=n, error=errno.EINTR)
        self.assertEqual((done.returncode, operations.count("write")), (0, 3))
        self.check_files(new, 2)


class Outputs(Case):
    """Every output of every command: the words before its name, and what goes with it."""

    WRITERS = {
        "partition -o": ("partition g.hgr -k 2 -q -o", ""),
        "partition --json": ("partition g.hgr -k 2 -q -o plain --json", ""),
        "lint --fix": ("lint g.hgr -q --map plain --fix", ""),
        "lint --map": ("lint g.hgr -q --fix plain --map", ""),
    }
    LINES = {"partition -o": 4, "lint --fix": 3, "lint --map": 2}  # of the file; JSON has many

    def setUp(self):
        super().setUp()
        self.file("g.hgr", "2 4\n1 2 3\n3 4\n")

    def writers(self):
        for name, (words, _) in self.WRITERS.items():
            for old in ("plain",):
                (self.folder / old).unlink(missing_ok=True)
            with self.subTest(name):
                yield name, words.split()

    def holds_output(self, name, text):
        if name in self.LINES:
            self.assertEqual(text.count("\n"), self.LINES[name], text)
        else:
            self.assertTrue(text.startswith("{") and text.endswith("}\n"), text)


class Places(Outputs):
    """Where an output may go."""

    def test_a_new_file_obeys_the_umask(self):
        for name, words in self.writers():
            self.run_ok(*words, "new", umask=0o027)
            self.holds_output(name, self.text("new"))
            self.assertEqual((self.folder / "new").stat().st_mode & 0o7777, 0o640)
            (self.folder / "new").unlink()

    def test_an_old_file_keeps_its_rights_but_not_those_to_run_as_its_owner(self):
        for name, words in self.writers():
            self.file("old", "old\n")
            (self.folder / "old").chmod(0o6754)
            self.run_ok(*words, "old")
            self.holds_output(name, self.text("old"))
            self.assertEqual((self.folder / "old").stat().st_mode & 0o7777, 0o754)

    @unittest.skipIf(os.getuid() != 0, "only root gives files away")
    def test_an_old_file_keeps_its_owner(self):
        for name, words in self.writers():
            self.file("old", "old\n")
            os.chown(self.folder / "old", NOBODY, NOBODY)
            self.run_ok(*words, "old")
            self.holds_output(name, self.text("old"))
            found = (self.folder / "old").stat()
            self.assertEqual((found.st_uid, found.st_gid), (NOBODY, NOBODY))

    @unittest.skipIf(os.getuid() != 0, "only root gives files away")
    def test_an_owner_that_cannot_be_kept_is_told_before_the_run(self):
        for _, words in self.writers():
            self.folder.chmod(0o777)
            self.file("old", "old\n")
            (self.folder / "old").chmod(0o666)
            done = self.fails(5, "cannot write old: ", *words, "old", user=NOBODY, group=NOBODY)
            self.assertNotIn("in spite", done.stderr)
            self.assertEqual(self.text("old"), "old\n")
            self.assertEqual(self.names(), ["g.hgr", "old"])

    @unittest.skipIf(os.getuid() != 0, "only root is somebody else for a while")
    def test_what_may_not_be_written_is_told_before_the_run(self):
        self.file("old", "old\n")
        (self.folder / "old").chmod(0o444)
        (self.folder / "inner").mkdir(mode=0o755)
        (self.folder / "sticky").mkdir()
        (self.folder / "sticky").chmod(0o1777)
        (self.folder / "sticky" / "old").write_text("old\n")
        (self.folder / "sticky" / "old").chmod(0o666)
        self.folder.chmod(0o777)
        for _, words in self.writers():
            for place, error in (("old", errno.EACCES), ("inner/new", errno.EACCES)):
                told = f"cannot write {place}: {os.strerror(error)}"
                self.fails(5, told, *words, place, user=NOBODY, group=NOBODY)
            told = "cannot write sticky/old: "
            self.fails(5, told, *words, "sticky/old", user=NOBODY, group=NOBODY)
        self.assertEqual(self.names(), ["g.hgr", "inner", "old", "sticky"])
        self.assertEqual(self.text("old"), "old\n")

    def test_places_that_cannot_be_are_told_before_the_run(self):
        (self.folder / "inner").mkdir()
        (self.folder / "lost").symlink_to("no/such/folder")
        (self.folder / "round").symlink_to("round")
        (self.folder / "in").symlink_to("inner")
        before = self.names()
        for _, words in self.writers():
            for place, error in {
                "no/where": errno.ENOENT,
                "lost": errno.ENOENT,
                "round": errno.ELOOP,
                "inner": errno.EISDIR,
                "in": errno.EISDIR,
                "inner/": errno.EISDIR,
                "inner/..": errno.EISDIR,
                "g.hgr/new": errno.ENOTDIR,
                "n" * 256: errno.ENAMETOOLONG,
            }.items():
                told = f"cannot write {place}: {os.strerror(error)}"
                self.fails(5, told, *words, place)
                self.assertEqual(self.names(), before)

    def test_the_place_is_looked_at_before_the_hypergraph(self):
        self.file("g.hgr", "this is none\n")
        for _, words in self.writers():
            self.fails(5, "cannot write no/where", *words, "no/where")

    def test_links_are_followed_and_stay(self):
        (self.folder / "inner").mkdir()
        for name, words in self.writers():
            self.file("old", "old\n")
            for link, target in (("first", "inner/second"), ("to", "old"), ("inner/second", "new")):
                (self.folder / link).symlink_to(target)
            for link, end in (("first", "inner/new"), ("to", "old")):
                self.run_ok(*words, link)
                self.assertTrue((self.folder / link).is_symlink())
                self.assertFalse((self.folder / end).is_symlink())
                self.holds_output(name, self.text(end))
            self.assertTrue((self.folder / "inner/second").is_symlink())
            for made in ("first", "to", "inner/second", "inner/new", "old"):
                (self.folder / made).unlink()

    @unittest.skipIf(os.getuid() != 0, "only root gives files away")
    def test_links_are_followed_where_the_system_would(self):
        protected = pathlib.Path("/proc/sys/fs/protected_symlinks").read_text() != "0\n"
        shared = self.folder / "shared"
        shared.mkdir()
        shared.chmod(0o1777)
        os.symlink("new", shared / "link")
        os.chown(shared / "link", NOBODY, NOBODY, follow_symlinks=False)
        for name, words in self.writers():
            done = self.call(*words, "shared/link")
            self.assertEqual(done.returncode, 5 if protected else 0, done.stderr)
            self.assertEqual((shared / "new").exists(), not protected)

    def test_names_of_255_bytes(self):
        for name, words in self.writers():
            for long in ("n" * 255, "\u20ac" * 85):
                for _ in ("new", "old"):
                    self.run_ok(*words, long)
                    self.holds_output(name, self.text(long))
                (self.folder / long).unlink()

    def test_devices_are_written_where_they_stand(self):
        for _, words in self.writers():
            self.run_ok(*words, "/dev/null")
            self.fails(5, os.strerror(errno.ENOSPC), *words, "/dev/full")
        self.assertTrue(stat.S_ISCHR(os.stat("/dev/null").st_mode))
        self.run_ok("partition", "g.hgr", "-k", 2, "-o", "/dev/null", "--json", "/dev/null")

    def test_a_fifo_is_written_where_it_stands(self):
        os.mkfifo(self.folder / "pipe")
        for name, words in self.writers():
            got = []
            reader = threading.Thread(target=lambda: got.append(self.text("pipe")))
            reader.start()
            self.run_ok(*words, "pipe")
            reader.join()
            self.holds_output(name, got[0])
            self.assertTrue(stat.S_ISFIFO((self.folder / "pipe").stat().st_mode))

    def test_standard_output_is_written_where_it_stands(self):
        for name, words in self.writers():
            for place in ("-", "/dev/stdout", "/dev/fd/1", "/proc/self/fd/1", "link"):
                if name == "lint --map" and place == "-":
                    pass  # "-" is a name as good as any
                (self.folder / "link").unlink(missing_ok=True)
                (self.folder / "link").symlink_to("/dev/stdout")
                self.file("log", "this stood there, longer than what is written " * 9 + "\n")
                before = self.text("log")
                with open(self.folder / "log", "a") as log:
                    done = subprocess.run([ZORPELX, *words, place], stdout=log, cwd=self.folder)
                self.assertEqual(done.returncode, 0)
                self.assertEqual(self.text("log")[: len(before)], before)
                self.holds_output(name, self.text("log")[len(before) :])
                done = self.run_ok(*words, place)
                self.holds_output(name, done.stdout)

    def test_another_descriptor_is_written_where_it_stands(self):
        for name, words in self.writers():
            with open(self.folder / "log", "w+") as log:
                log.write("first\n")
                log.flush()
                file = log.fileno()
                self.run_ok(*words, f"/dev/fd/{file}", pass_fds=[file])
                os.write(file, b"last\n")
            first, rest = self.text("log").split("\n", 1)
            self.assertEqual(first, "first")
            self.assertEqual(rest[-5:], "last\n")
            self.holds_output(name, rest[:-5])

    def test_a_stream_that_is_closed_is_told_before_the_run(self):
        self.file("g.hgr", "this is none\n")
        for _, words in self.writers():
            script = f"exec '{ZORPELX}' {' '.join(words)} - >&-"
            done = subprocess.run(
                ["sh", "-c", script], cwd=self.folder, stderr=subprocess.PIPE, text=True
            )
            told = f"zorpelx: cannot write standard output: {os.strerror(errno.EBADF)}\n"
            self.assertEqual((done.returncode, done.stderr), (5, told))

    def test_a_closed_standard_stream_is_no_file_of_ours(self):
        """The first file that is opened would take its number, and all that is printed."""
        for closed in ("0<&-", "1>&-", "2>&-", "0<&- 1>&- 2>&-"):
            self.file("out", "old\n")
            script = f"exec '{ZORPELX}' partition g.hgr -k 2 -o out {closed}"
            subprocess.run(["sh", "-c", script], cwd=self.folder, capture_output=True)
            self.assertRegex(self.text("out"), r"\A([01]\n){4}\Z")

    def test_what_comes_from_a_stream_goes_to_standard_output(self):
        before = sorted(os.listdir("/dev"))
        graph = self.text("g.hgr")
        for name in ("-", "/dev/stdin", "/dev/fd/0", "/proc/self/fd/0"):
            done = self.run_ok("partition", name, "-k", 2, input=graph)
            self.assertRegex(done.stdout, r"\A([01]\n){4}\Z")
            with open(self.folder / "g.hgr") as file:  # a regular file as well
                done = self.run_ok("partition", name, "-k", 2, stdin=file)
            self.assertRegex(done.stdout, r"\A([01]\n){4}\Z")
        script = f"'{ZORPELX}' partition <(cat g.hgr) -k 2"
        done = subprocess.run(["bash", "-c", script], cwd=self.folder, capture_output=True)
        self.assertRegex(done.stdout.decode(), r"\A([01]\n){4}\Z")
        self.assertEqual(self.names(), ["g.hgr"])
        self.assertEqual(sorted(os.listdir("/dev")), before)

    def test_a_reader_that_goes_away_is_told(self):
        for _, words in self.writers():
            reading, writing = os.pipe()
            os.close(reading)
            done = subprocess.run(
                [ZORPELX, *words, "/dev/stdout"],
                stdout=writing,
                stderr=subprocess.PIPE,
                cwd=self.folder,
                text=True,
            )
            os.close(writing)
            told = f"zorpelx: cannot write /dev/stdout: {os.strerror(errno.EPIPE)}\n"
            self.assertEqual((done.returncode, done.stderr), (5, told))
            self.assertEqual(self.names(), ["g.hgr"])  # the other output did not appear

    def test_a_file_size_limit_is_told_and_leaves_nothing(self):
        self.example("mult16.hgr")
        writers = {name: words for name, (words, _) in self.WRITERS.items()}
        for name, words in writers.items():
            for action in (signal.SIG_IGN, signal.SIG_DFL):
                self.file("out", "old\n")

                def cap(action=action):
                    signal.signal(signal.SIGXFSZ, action)
                    resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000))

                words = words.replace("g.hgr", "mult16.hgr")
                done = self.fails(5, os.strerror(errno.EFBIG), *words.split(), "out", preexec_fn=cap)
                self.assertNotIn("in spite", done.stderr)
                if name != "partition --json":  # which tells of the failure
                    self.assertEqual(self.text("out"), "old\n")
                self.assertEqual(self.names(), ["g.hgr", "mult16.hgr", "out"])

    def test_answers_past_a_file_size_limit_are_told(self):
        def cap():
            resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100))

        for words in ("stats g.hgr", "lint --explain all", "--man", "verify g.hgr part -k 2"):
            self.file("part", "0\n0\n1\n1\n")
            with open(self.folder / "log", "w") as log:
                done = subprocess.run(
                    [ZORPELX, *words.split()],
                    stdout=log,
                    stderr=subprocess.PIPE,
                    cwd=self.folder,
                    preexec_fn=cap,
                    text=True,
                )
            told = f"zorpelx: cannot write standard output: {os.strerror(errno.EFBIG)}\n"
            self.assertEqual((done.returncode, done.stderr), (5, told))

    def test_killed_in_the_middle_of_the_run(self):
        self.file("big.hgr", random_hypergraph(3000, 6000))
        self.file("out", "old\n")
        words = [ZORPELX, "partition", "big.hgr", "-k", "8", "-o", "out", "--runs", "1000"]
        run = subprocess.Popen(words, cwd=self.folder)
        workers = wait_for(lambda: children_of(run))
        run.kill()
        run.wait()
        wait_for(lambda: are_gone(workers))
        self.assertEqual(self.text("out"), "old\n")
        self.assertEqual(self.names(), ["big.hgr", "g.hgr", "out"])

    def test_a_file_that_goes_or_comes_during_the_run(self):
        """The new one takes the place of what stands there then."""
        self.file("big.hgr", random_hypergraph(3000, 6000))
        for before in (True, False):
            (self.folder / "out").unlink(missing_ok=True)
            if before:
                self.file("out", "old\n")
            words = [ZORPELX, *"partition big.hgr -k 2 -r 20 -q -o out".split()]
            run = subprocess.Popen(words, cwd=self.folder)
            wait_for(lambda: children_of(run))
            if before:
                (self.folder / "out").unlink()
            else:
                self.file("out", "somebody else's\n")
            self.assertEqual(run.wait(), 0)
            self.assertEqual(self.text("out").count("\n"), 3000)
            self.assertEqual(self.names(), ["big.hgr", "g.hgr", "out"])


class OnePlace(Outputs):
    """Two outputs that are one place, and outputs that are read, are refused with 2."""

    PAIRS = {
        "partition": "partition g.hgr fix -k 2 -o {} --json {}",
        "lint": "lint g.hgr fix --fix {} --map {}",
    }

    def setUp(self):
        super().setUp()
        self.file("fix", "-1\n-1\n-1\n-1\n")
        (self.folder / "inner").mkdir()
        (self.folder / "here").symlink_to(".")
        (self.folder / "dangling").symlink_to("new")
        (self.folder / "further").symlink_to("dangling")
        (self.folder / "link").symlink_to("g.hgr")
        os.link(self.folder / "g.hgr", self.folder / "hard")
        os.mkfifo(self.folder / "pipe")

    def refused(self, sentence, line):
        words = line.replace(" fix -k 2", " --fix fix -k 2").split()
        before = {name: (self.folder / name).lstat() for name in self.names()}
        done = self.fails(2, sentence, *words)
        after = {name: (self.folder / name).lstat() for name in self.names()}
        for name, found in after.items():
            self.assertEqual(found.st_ino, before[name].st_ino, name)
            self.assertEqual(found.st_mtime_ns, before[name].st_mtime_ns, name)
        self.assertEqual(len(before), len(after))
        self.assertEqual(done.stdout, "")

    def test_two_names_of_one_place(self):
        self.file("old", "old\n")
        os.link(self.folder / "old", self.folder / "twin")
        new = ["new", "./new", "inner/../new", "here/new", f"{self.folder}/new", "dangling", "further"]
        old = ["old", "./old", "here/old", "twin"]
        streams = ["-", "/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"]
        for line in self.PAIRS.values():
            for names in (new, old, streams, ["pipe", "./pipe"]):
                for a in names:
                    for b in names:
                        self.refused("would be written twice", line.format(a, b))

    def test_the_map_that_goes_with_the_clean_file(self):
        (self.folder / "new.map").symlink_to("new")
        self.refused("would be written twice", "lint g.hgr --fix new")

    def test_an_output_that_is_read(self):
        names = ["g.hgr", "./g.hgr", "here/g.hgr", "link", "hard", "fix", "inner/../fix"]
        for line in self.PAIRS.values():
            for name in names:
                told = f"{name} is read, and would be overwritten"
                self.refused(told, line.format(name, "new"))
                self.refused(told, line.format("new", name))
        (self.folder / "clean.map").symlink_to("g.hgr")
        self.refused("clean.map is read", "lint g.hgr --fix clean")

    def test_an_output_that_comes_through_standard_input(self):
        for command in ("partition {} -k 2 -o g.hgr", "lint {} --fix g.hgr", "lint {} --fix a --map g.hgr"):
            for name in ("-", "/dev/stdin"):
                with open(self.folder / "g.hgr") as file:
                    words = command.format(name).split()
                    done = self.fails(2, "g.hgr is read, and would be over", *words, stdin=file)
                self.assertEqual(done.stdout, "")
        self.assertEqual(self.text("g.hgr"), "2 4\n1 2 3\n3 4\n")

    def test_standard_output_that_is_a_file(self):
        """It is an output of every command."""
        self.file("part", "0\n0\n1\n1\n")
        self.file("log", "")
        for line, sentence in {
            "stats g.hgr": "is read",
            "lint g.hgr": "is read",
            "verify g.hgr part": "is read",
            "partition g.hgr -k 2 -o out": "is read",
        }.items():
            before = self.text("g.hgr")
            with open(self.folder / "g.hgr", "a") as file:
                done = subprocess.run(
                    [ZORPELX, *line.split()], stdout=file, stderr=subprocess.PIPE, cwd=self.folder
                )
            self.assertEqual(done.returncode, 2)
            self.assertIn(sentence, done.stderr.decode())
            self.assertEqual(self.text("g.hgr"), before)
        for line in ("partition g.hgr -k 2 -o log", "lint g.hgr --fix log"):
            for stream in ("stdout", "stderr"):
                with open(self.folder / "log", "a") as file:
                    done = subprocess.run([ZORPELX, *line.split()], cwd=self.folder, **{stream: file})
                self.assertEqual(done.returncode, 2)
        self.assertNotIn("0\n", self.text("log"))

    def test_different_places_are_none(self):
        self.run_ok("partition", "g.hgr", "-k", 2, "-o", "a", "--json", "A")
        self.run_ok("partition", "g.hgr", "-k", 2, "-o", "inner/a", "--json", "a")
        self.run_ok("partition", "g.hgr", "-k", 2, "-o", "/dev/stdout", "--json", "/dev/stderr")


class Shown(Case):
    """What a terminal would obey is shown escaped."""

    NAMES = {
        "a\x1b[31mb": r"a\x1b[31mb",
        "a\nzorpelx: all is well": r"a\nzorpelx: all is well",
        "a\rb\tc\x07": r"a\rb\tc\x07",
        "a\u202eb\u2066": r"a\xe2\x80\xaeb\xe2\x81\xa6",
        "a\x9bb": r"a\xc2\x9bb",
        b"a\xff\xc3(": r"a\xff\xc3(",
        "h\u00fcgel \u4e2d": "h\u00fcgel \u4e2d",
    }

    def calls(self, name):
        """Calls of every command that show a name."""
        yield "stats", name
        yield "lint", name
        yield "lint", name, "--limit", "1"
        yield "verify", name, "part"
        yield "verify", "g.hgr", name
        yield "partition", name, "-k", "2"
        yield "partition", "g.hgr", "-k", "2", "--fix", name
        yield "partition", "g.hgr", "-k", "2", "-o", name
        yield "partition", "g.hgr", "-k", "2", "-o", name, "--json", name
        yield "partition", "g.hgr", "-k", name
        yield "partition", "g.hgr", "-k", "2", "--matching", name
        yield "lint", "g.hgr", "--fix", name
        yield "lint", "--explain", name
        yield (name,)
        yield "stats", "g.hgr", name

    def test_no_command_passes_them_on(self):
        self.file("g.hgr", "2 4\n1 2 3\n3 4\n")
        self.file("part", "0\n0\n1\n1\n")
        for name, shown in self.NAMES.items():
            path = self.folder / os.fsdecode(name)
            for content in (None, "2 4\n1 2 3\n3 4\n", "1 2\n1 9\n", "0 0 1 1 7\n"):
                for words in self.calls(os.fsdecode(name)):
                    path.unlink(missing_ok=True)
                    if content is not None:
                        path.write_text(content)
                    done = self.call(*words, text=False)
                    out = (done.stdout + done.stderr).decode()
                    for bad in "\x1b\x07\r\t\u202e\u2066\x9b":
                        self.assertNotIn(bad, out, words)
                    self.assertNotIn("\nzorpelx: all is well", out, words)
                    if words[0] == "stats" and content is None:
                        self.assertIn(shown, out)
            path.unlink(missing_ok=True)


if __name__ == "__main__":
    unittest.main()
