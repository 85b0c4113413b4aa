#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The program itself on a full disk, beyond a quota, and with files that cannot be read.

usage: full_disk.py ZORPEL

The partition file is whole or absent: what cannot be written is reported on standard error, and
nothing stays behind. The status is 0, for errors as for success.
"""
import os
import pathlib
import resource
import signal
import subprocess
import sys
import tempfile
import unittest

PROGRAM = pathlib.Path(sys.argv.pop(1)).resolve()
NVERTICES = 3000


def beyond_quota(action, most=1000):
    """What a child does to be under a limit of file sizes."""

    def limit():
        signal.signal(signal.SIGXFSZ, action)
        resource.setrlimit(resource.RLIMIT_FSIZE, (most, most))

    return limit


class FullDisk(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.graph = pathlib.Path(place.name, "chain.hgr")
        lines = [f"{NVERTICES - 1} {NVERTICES}"]
        lines += [f"{v} {v + 1}" for v in range(1, NVERTICES)]
        self.graph.write_text("\n".join(lines) + "\n")
        self.partition = pathlib.Path(place.name, "chain.hgr.part.2")

    def run_program(self, graph=None, fix=None, **how):
        words = [PROGRAM, graph or self.graph] + ([fix] if fix else [])
        words += "2 5 1 5 1 0 0 0".split()
        return subprocess.run(words, capture_output=True, text=True, **how)

    def check_refused(self, run, *texts):
        self.assertEqual(run.returncode, 0)
        for text in texts:
            self.assertIn(text, run.stderr)
        self.assertNotIn("Summary", run.stdout)

    def test_a_good_disk_takes_every_line(self):
        run = self.run_program()
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        self.assertEqual(len(self.partition.read_text().splitlines()), NVERTICES)

    def test_a_full_disk_is_reported(self):
        os.symlink("/dev/full", self.partition)
        self.check_refused(self.run_program(), "cannot write", "No space left on device")
        self.assertTrue(self.partition.is_symlink())

    def test_beyond_a_limit_of_file_sizes_no_file_stays(self):
        for action in (signal.SIG_IGN, signal.SIG_DFL):
            for most in (0, 1000, 2 * NVERTICES - 1):
                run = self.run_program(preexec_fn=beyond_quota(action, most))
                self.check_refused(run, "cannot write", "File too large")
                self.assertFalse(self.partition.exists(), most)
        run = self.run_program(preexec_fn=beyond_quota(signal.SIG_DFL, 2 * NVERTICES))
        self.assertEqual((run.returncode, run.stderr), (0, ""))

    def test_an_older_file_does_not_stay_either(self):
        self.partition.write_text("0\n" * NVERTICES)
        run = self.run_program(preexec_fn=beyond_quota(signal.SIG_IGN))
        self.check_refused(run, "cannot write", "File too large")
        self.assertFalse(self.partition.exists())

    def test_behind_a_link_the_file_goes_and_the_link_stays(self):
        behind = self.partition.with_name("elsewhere")
        os.symlink("elsewhere", self.partition)
        run = self.run_program(preexec_fn=beyond_quota(signal.SIG_IGN))
        self.check_refused(run, "cannot write", "File too large")
        self.assertFalse(behind.exists())
        self.assertTrue(self.partition.is_symlink())

    def test_a_report_that_is_not_written_whole_is_told(self):
        with open("/dev/full", "w") as full:
            words = [PROGRAM, self.graph] + "2 5 1 5 1 0 0 0".split()
            run = subprocess.run(words, stdout=full, stderr=subprocess.PIPE, text=True)
        self.assertEqual(run.returncode, 0)
        self.assertIn("Standard output cannot be written whole!", run.stderr)
        self.assertEqual(len(self.partition.read_text().splitlines()), NVERTICES)

    def test_a_file_that_cannot_be_created_is_reported(self):
        self.partition.mkdir()
        self.check_refused(self.run_program(), "Is a directory")

    def test_a_directory_is_no_hypergraph(self):
        self.check_refused(self.run_program(graph=self.graph.parent), "Is a directory")

    def test_a_directory_is_no_fix_file(self):
        self.check_refused(self.run_program(fix=self.graph.parent), "Is a directory")


if __name__ == "__main__":
    unittest.main()
